#include "norvi/gallery_command.h"

#include <cstdio>
#include <memory>

#include "norvi/noise_gallery.h"
#include "norvi/sampling_gallery.h"

namespace norvi {

namespace {

struct Gallery {
    const char* subject;
    Result<void> (*write)(const String& directory, Int32 size);
};

constexpr Gallery galleries[] = {
    {"noise", [](const String& directory, Int32 size) { return WriteNoiseGallery(directory, size); }},
    {"sampling", [](const String& directory, Int32 size) { return WriteSamplingGallery(directory, size); }},
};

struct GalleryOptions {
    String subject = "noise";
    String directory; ///< empty: named after the subject
    Int32 size = 160;
};

Result<void> Draw(const GalleryOptions& options, const CommandContext& context) {
    const String directory = options.directory.empty() ? options.subject + "-gallery" : options.directory;
    for (const Gallery& gallery : galleries)
        if (options.subject == gallery.subject)
            NORVI_TRY(gallery.write(directory, options.size));
    if (!context.isQuiet)
        std::printf("the pictures, and a page that shows them, are in %s/index.html\n", directory.c_str());
    return OK;
}

} // namespace

void AddGalleryCommand(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<GalleryOptions>();
    auto* command = app.add_subcommand(
        "gallery",
        "Draw all noises, or what the settings of a texture do: pictures and a page that shows them");
    BaseArray<String> subjects;
    for (const Gallery& gallery : galleries)
        subjects.push_back(gallery.subject);
    command->add_option("subject", options->subject, "What to draw")
        ->check(CLI::IsMember(subjects))
        ->capture_default_str();
    command->add_option("directory", options->directory,
                        "Where to write; made if it is missing (default: SUBJECT-gallery)");
    command->add_option("--size", options->size, "Width and height of each picture, in pixels")
        ->capture_default_str();
    command->footer(ExamplesText({"norvi gallery", "norvi gallery sampling pictures --size 64"}));
    command->callback(
        [options, &context] { context.action = [options](CommandContext& c) { return Draw(*options, c); }; });
}

} // namespace norvi
