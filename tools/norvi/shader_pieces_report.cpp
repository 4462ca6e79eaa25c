#include "norvi/shader_pieces_report.h"

#include <algorithm>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <norvi/host/text.h>

namespace norvi {

namespace {

using Json = nlohmann::ordered_json;

struct QualifierWord {
    UInt32 qualifier;
    const char* word;
};

constexpr QualifierWord qualifierWords[] = {{KernelParameterEntry::Const, "read-only"},
                                            {KernelParameterEntry::Varying, "varying"},
                                            {KernelParameterEntry::Out, "out"},
                                            {KernelParameterEntry::Attribute, "attribute"}};

String QualifierText(UInt32 qualifier) {
    for (const QualifierWord& row : qualifierWords)
        if (qualifier == row.qualifier)
            return row.word;
    return {};
}

UInt32 DimensionsOf(const KernelTextureEntry& texture) {
    return texture.textureKind == 1 ? 1 : texture.textureKind == 6 ? 2 : 3;
}

/// The pieces of a parser, one JSON array for each kind.
class PiecesReport {
  public:
    explicit PiecesReport(const ShaderParser& parser) : parser_(parser) {}

    Json Make() const {
        const Vec3<UInt32> group = parser_.GetWorkGroupSize();
        Json files = Json::array();
        for (const SourceFile& file : parser_.GetSourceFiles())
            files.push_back({{"name", file.url.ToString()}, {"encoded", file.isEncoded}});
        return {{"language", parser_.GetLanguage().ToString()},
                {"groupSize", {group.x, group.y, group.z}},
                {"noiseCalls", parser_.GetNoiseCallCount()},
                {"parameters", Parameters()},
                {"textures", Textures()},
                {"defines", Texts(parser_.GetDefines())},
                {"structs", Structs()},
                {"functions", Functions()},
                {"groupShared", Texts(parser_.GetGroupSharedDeclarations())},
                {"blocks", Texts(parser_.GetGlobalBlocks())},
                {"kernel", Texts({parser_.GetKernelText()})},
                {"files", files}};
    }

  private:
    /// `piece` with its place, or the place alone.
    Json Placed(Json piece, LineOrigin origin) const {
        if (origin.line == 0)
            return piece;
        const SourceFile& file = parser_.GetSourceFiles()[origin.file];
        if (file.isEncoded)
            piece = {{"name", "(encoded)"}};
        piece["file"] = file.url.ToString();
        piece["line"] = origin.line;
        return piece;
    }

    Json Parameters() const {
        Json all = Json::array();
        for (const KernelParameterEntry& entry : parser_.GetParameters())
            all.push_back(Placed({{"name", entry.name},
                                  {"kind", entry.type ? "uniform" : "buffer"},
                                  {"type", entry.type ? entry.type.ToString() : entry.elementTypeName},
                                  {"qualifier", QualifierText(entry.qualifier)}},
                                 entry.origin));
        return all;
    }

    Json Textures() const {
        Json all = Json::array();
        for (const KernelTextureEntry& entry : parser_.GetTextures())
            all.push_back(Placed({{"name", entry.name},
                                  {"kind", Format("@D texture", DimensionsOf(entry))},
                                  {"type", entry.pixelFormat.ToString()},
                                  {"filter", entry.isLinear ? "linear" : "point"},
                                  {"qualifier", entry.isConst ? "read-only" : ""}},
                                 entry.origin));
        return all;
    }

    Json Structs() const {
        Json all = Json::array();
        for (const StructEntry& entry : parser_.GetStructs()) {
            // The first and the last entry are line breaks.
            Json members(BaseArray<String>(entry.lines.begin() + 1, entry.lines.end() - 1));
            all.push_back(Placed({{"name", entry.name}, {"members", members}}, entry.lineOrigins.front()));
        }
        return all;
    }

    Json Functions() const {
        Json all = Json::array();
        for (const InlineFunctionEntry& entry : parser_.GetInlineFunctions())
            all.push_back(
                Placed({{"name", entry.signature}, {"lines", entry.text.lines.size()}}, entry.origin));
        return all;
    }

    Json Texts(const BaseArray<MappedText>& texts) const {
        Json all = Json::array();
        for (const MappedText& text : texts)
            if (!text.IsEmpty())
                all.push_back(
                    Placed({{"text", text.text}, {"lines", text.lines.size()}}, text.lines.front()));
        return all;
    }

    const ShaderParser& parser_;
};

String TextOf(const Json& value) {
    return value.is_string() ? value.get<String>() : value.dump();
}

constexpr size_t MostColumns = 72;

/// Texts of many lines are told by the beginning of their first one.
String Beginning(const String& text) {
    const String line = text.substr(0, text.find('\n'));
    return line.size() > MostColumns ? line.substr(0, MostColumns) + " ..." : line;
}

/// What one piece is, in one line.
String Summary(const Json& piece) {
    if (piece.contains("kind")) {
        String text =
            fmt::format("{:<16} {} {}", TextOf(piece["name"]), TextOf(piece["kind"]), TextOf(piece["type"]));
        for (const char* key : {"filter", "qualifier"})
            if (piece.contains(key) && piece[key] != "")
                text += ", " + TextOf(piece[key]);
        return text;
    }
    String text = Beginning(TextOf(piece.contains("name") ? piece["name"] : piece["text"]));
    if (piece.contains("members"))
        text += fmt::format(", {} members", piece["members"].size());
    if (const auto lines = piece.find("lines"); lines != piece.end() && *lines > 1)
        text += fmt::format(", {} lines", TextOf(*lines));
    return text;
}

String PieceText(const Json& piece) {
    const String place = piece.contains("file")
                             ? fmt::format("{}({})", TextOf(piece["file"]), TextOf(piece["line"]))
                             : "made for the file";
    return fmt::format("  {:<56} {}\n", Summary(piece), place);
}

struct Section {
    const char* key;
    const char* title;
};

constexpr Section sections[] = {
    {"parameters", "parameters"},
    {"textures", "textures"},
    {"defines", "defines"},
    {"structs", "structs"},
    {"functions", "inline functions"},
    {"groupShared", "group shared memory"},
    {"blocks", "global text"},
    {"kernel", "kernel"},
};

} // namespace

String PiecesText(const ShaderParser& parser) {
    const Json report = PiecesReport(parser).Make();
    const Json& group = report["groupSize"];
    String text = fmt::format("language:\n  {}\nwork group:\n  {} x {} x {}\n", TextOf(report["language"]),
                              TextOf(group[0]), TextOf(group[1]), TextOf(group[2]));
    for (const Section& section : sections) {
        text += fmt::format("{}:\n{}", section.title, report[section.key].empty() ? "  none\n" : "");
        for (const Json& piece : report[section.key])
            text += PieceText(piece);
    }
    if (report["noiseCalls"] > 0)
        text += fmt::format("noise calls:\n  {}\n", TextOf(report["noiseCalls"]));
    return text;
}

String PiecesJsonText(const ShaderParser& parser) {
    return PiecesReport(parser).Make().dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace norvi
