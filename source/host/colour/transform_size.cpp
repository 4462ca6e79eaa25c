#include "transform_size.h"

#include <map>

namespace norvi {

namespace {

// Real definitions refer two or three deep. The library recurses, with some kilobytes a level.
constexpr int MostNesting = 100;
// Steps of one space with all that it refers to; real ones have tens, each takes the library microseconds.
constexpr Int MostSteps = 10000;

enum class Kind { Space, Look, ViewTransform };

struct Node {
    Kind kind;
    String name;
    auto operator<=>(const Node&) const = default;
};

/// What a node consists of: steps of its own, and other nodes that the library puts in their place.
struct Definition {
    Int steps = 0;
    BaseArray<Node> references;
};

class DefinitionReader {
  public:
    explicit DefinitionReader(const OCIO::Config& config) : config_(config) {}

    Definition Read(const Node& node) {
        definition_ = {};
        switch (node.kind) {
        case Kind::Space:
            ReadSpace(node.name.c_str());
            break;
        case Kind::Look:
            if (const auto look = config_.getLook(node.name.c_str())) {
                ReferTo(Kind::Space, look->getProcessSpace());
                ReadTransform(look->getTransform());
                ReadTransform(look->getInverseTransform());
            }
            break;
        case Kind::ViewTransform:
            if (const auto view = config_.getViewTransform(node.name.c_str())) {
                ReadTransform(view->getTransform(OCIO::VIEWTRANSFORM_DIR_TO_REFERENCE));
                ReadTransform(view->getTransform(OCIO::VIEWTRANSFORM_DIR_FROM_REFERENCE));
            }
            break;
        }
        return std::move(definition_);
    }

  private:
    void ReadSpace(const char* name) {
        if (const auto space = config_.getColorSpace(name)) {
            ReadTransform(space->getTransform(OCIO::COLORSPACE_DIR_TO_REFERENCE));
            ReadTransform(space->getTransform(OCIO::COLORSPACE_DIR_FROM_REFERENCE));
        } else if (const auto named = config_.getNamedTransform(name)) {
            ReadTransform(named->getTransform(OCIO::TRANSFORM_DIR_FORWARD));
            ReadTransform(named->getTransform(OCIO::TRANSFORM_DIR_INVERSE));
        }
    }

    // Groups are nested in the file itself, so the parser's limit holds for this recursion.
    void ReadTransform(const OCIO::ConstTransformRcPtr& transform) {
        if (const auto group = OCIO::DynamicPtrCast<const OCIO::GroupTransform>(transform))
            for (int i = 0; i < group->getNumTransforms(); ++i)
                ReadTransform(group->getTransform(i));
        else if (const auto conversion = OCIO::DynamicPtrCast<const OCIO::ColorSpaceTransform>(transform))
            ReadConversion(conversion->getSrc(), conversion->getDst());
        else if (const auto look = OCIO::DynamicPtrCast<const OCIO::LookTransform>(transform)) {
            ReadConversion(look->getSrc(), look->getDst());
            ReadLooks(look->getLooks());
        } else if (const auto view = OCIO::DynamicPtrCast<const OCIO::DisplayViewTransform>(transform))
            ReadView(*view);
        else if (transform)
            ++definition_.steps;
    }

    void ReadConversion(const char* source, const char* target) {
        ReferTo(Kind::Space, source);
        ReferTo(Kind::Space, target);
        const auto from = FindSpace(source), to = FindSpace(target);
        if (from && to && from->getReferenceSpaceType() != to->getReferenceSpaceType())
            if (const auto view = config_.getDefaultSceneToDisplayViewTransform())
                ReferTo(Kind::ViewTransform, view->getName());
    }

    void ReadView(const OCIO::DisplayViewTransform& view) {
        const char* target = config_.getDisplayViewColorSpaceName(view.getDisplay(), view.getView());
        ReadConversion(view.getSrc(), target);
        ReferTo(Kind::ViewTransform, config_.getDisplayViewTransformName(view.getDisplay(), view.getView()));
        ReadLooks(config_.getDisplayViewLooks(view.getDisplay(), view.getView()));
    }

    /// Names with signs in front: "+warm, -grain | warm".
    void ReadLooks(std::string_view looks) {
        constexpr std::string_view Between = "+-,:| \t";
        while (true) {
            looks.remove_prefix(std::min(looks.find_first_not_of(Between), looks.size()));
            if (looks.empty())
                return;
            const size_t length = std::min(looks.find_first_of(",:| \t"), looks.size());
            ReferTo(Kind::Look, String(looks.substr(0, length)).c_str());
            looks.remove_prefix(length);
        }
    }

    /// Spaces are entered under their own name, whatever the file calls them.
    void ReferTo(Kind kind, const char* text) {
        if (!text)
            return;
        const auto space = kind == Kind::Space ? FindSpace(text) : nullptr;
        definition_.references.push_back({kind, space ? space->getName() : Resolve(text)});
    }

    /// By name, alias or role, which may contain variables.
    OCIO::ConstColorSpaceRcPtr FindSpace(const char* text) const {
        return config_.getColorSpace(Resolve(text).c_str());
    }

    String Resolve(const char* text) const { return config_.getCurrentContext()->resolveStringVar(text); }

    const OCIO::Config& config_;
    Definition definition_;
};

class StepCounter {
  public:
    explicit StepCounter(const OCIO::Config& config) : reader_(config) {}

    /// What the definition of a node amounts to, with all that it refers to.
    struct Size {
        Int steps = Unfinished;
        int depth = 0; ///< of the longest chain of references
    };

    /// @param nesting how many definitions led here; bounds the recursion.
    Result<Size> Count(const Node& node, int nesting) {
        const auto [place, isNew] = sizes_.try_emplace(node);
        if (!isNew && place->second.steps != Unfinished)
            return place->second;
        if (!isNew)
            return IllegalArgumentError(Format("'@' is defined by itself", node.name));
        if (nesting > MostNesting)
            return TooDeep(node);
        const Definition definition = reader_.Read(node);
        Size size{definition.steps, 0};
        for (const Node& reference : definition.references) {
            NORVI_TRY_VALUE(below, Count(reference, nesting + 1));
            size.steps += below.steps;
            // A reference that was counted before may have a long chain of its own.
            size.depth = std::max(size.depth, below.depth + 1);
            if (size.steps > MostSteps)
                return IllegalArgumentError(Format("'@' has more than @ steps", node.name, MostSteps));
            if (size.depth > MostNesting)
                return TooDeep(node);
        }
        return place->second = size;
    }

  private:
    static constexpr Int Unfinished = -1;

    static Failure TooDeep(const Node& node) {
        return IllegalArgumentError(
            Format("the definition of '@' is part of a chain of more than @", node.name, MostNesting));
    }

    DefinitionReader reader_;
    std::map<Node, Size> sizes_; ///< nodes keep their addresses
};

} // namespace

Result<void> CheckTransformSizes(const OCIO::Config& config) {
    StepCounter counter(config);
    const auto all = OCIO::SEARCH_REFERENCE_SPACE_ALL;
    for (int i = 0; i < config.getNumColorSpaces(all, OCIO::COLORSPACE_ALL); ++i) {
        const char* name = config.getColorSpaceNameByIndex(all, OCIO::COLORSPACE_ALL, i);
        NORVI_TRY(counter.Count({Kind::Space, name}, 0));
    }
    for (int i = 0; i < config.getNumViewTransforms(); ++i)
        NORVI_TRY(counter.Count({Kind::ViewTransform, config.getViewTransformNameByIndex(i)}, 0));
    return OK;
}

} // namespace norvi
