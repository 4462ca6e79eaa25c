#include "norvi/gallery_command.h"

#include <cstdio>
#include <memory>

#include "norvi/noise_gallery.h"

namespace norvi {

namespace {

struct GalleryOptions {
    String directory = "noise-gallery";
    Int32 size = 160;
};

Result<void> Draw(const GalleryOptions& options, const CommandContext& context) {
    NORVI_TRY(WriteNoiseGallery(options.directory, options.size));
    if (!context.isQuiet)
        std::printf("the pictures, and a page that shows them, are in %s/index.html\n",
                    options.directory.c_str());
    return OK;
}

} // namespace

void AddGalleryCommand(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<GalleryOptions>();
    auto* command =
        app.add_subcommand("gallery", "Draw all noises: a picture of each and a page that shows them");
    command->add_option("directory", options->directory, "Where to write; made if it is missing")
        ->capture_default_str();
    command->add_option("--size", options->size, "Width and height of each picture, in pixels")
        ->capture_default_str();
    command->footer(ExamplesText({"norvi gallery", "norvi gallery pictures --size 64"}));
    command->callback(
        [options, &context] { context.action = [options](CommandContext& c) { return Draw(*options, c); }; });
}

} // namespace norvi
