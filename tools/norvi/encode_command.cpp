#include "norvi/encode_command.h"

#include <array>
#include <cerrno>

#include <unistd.h>

#include <norvi/host/text.h>

#include "norvi/kernel_file.h"
#include "norvi/whole_file.h"
#include "shaderparser/encoded_file.h"
#include "shaderparser/source_files.h"

namespace norvi {

namespace {

struct CodingOptions {
    String file;
    String output;
};

void AddCodingCommand(CLI::App& app, CommandContext& context, const char* name, const char* help,
                      std::initializer_list<const char*> examples,
                      Result<void> (*run)(const String& file, const String& output)) {
    const auto options = std::make_shared<CodingOptions>();
    CLI::App* command = app.add_subcommand(name, help);
    command->add_option("FILE", options->file, "A file, or an installed kernel by its name")->required();
    command->add_option("-o,--output", options->output, "What is written; may be FILE itself")
        ->required()
        ->type_name("FILE");
    command->footer(ExamplesText(examples));
    command->callback([options, run, &context] {
        context.action = [options, run](auto&) { return run(options->file, options->output); };
    });
}

} // namespace

void AddEncodeCommand(CLI::App& app, CommandContext& context) {
    AddCodingCommand(app, context, "encode",
                     "Write a kernel file or header in encoded form; whoever has norvi can read it",
                     {
                         "norvi encode saxpy -o encoded.kernel",
                         "norvi translate encoded.kernel --check",
                     },
                     &EncodeFile);
}

void AddDecodeCommand(CLI::App& app, CommandContext& context) {
    AddCodingCommand(app, context, "decode", "Write the text of an encoded file",
                     {
                         "norvi encode saxpy -o encoded.kernel",
                         "norvi decode encoded.kernel -o decoded.kernel",
                     },
                     &DecodeFile);
}

Result<void> EncodeFile(const String& file, const String& output) {
    NORVI_TRY_VALUE(path, FindKernelFile(file));
    NORVI_TRY_VALUE(text, DiskFiles().Read(path));
    if (HasEncodedMagic(text))
        return IllegalArgumentError(Format("\"@\" is encoded already", file));
    std::array<UChar, 16> nonce{};
    if (getentropy(nonce.data(), nonce.size()) != 0)
        return SystemError("cannot make random bytes", errno);
    NORVI_TRY_VALUE(bytes, EncodeShaderFile(text, nonce));
    if (bytes.size() > SourceFiles::MostBytes)
        return IllegalArgumentError(Format("\"@\" is too large to be read when it is encoded", file));
    return WriteWholeFile(output, bytes);
}

Result<void> DecodeFile(const String& file, const String& output) {
    NORVI_TRY_VALUE(path, FindKernelFile(file));
    NORVI_TRY_VALUE(bytes, DiskFiles().Read(path));
    if (!HasEncodedMagic(bytes))
        return IllegalArgumentError(Format("\"@\" is not encoded", file));
    if (!DecodeShaderFile(bytes))
        return IllegalArgumentError(Format("\"@\" was cut off or changed, or is not of this program", file));
    return WriteWholeFile(output, bytes);
}

} // namespace norvi
