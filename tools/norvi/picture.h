// Picture files: whatever the image library reads and writes (PNG, JPEG, EXR, ...).
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Pixels as floats, row by row from the top, channels interleaved. Integer formats map to [0, 1].
struct Picture {
    Int width = 0;
    Int height = 0;
    Int channels = 0;
    BaseArray<Float32> pixels;
};

/// Does the suffix of the file's name stand for a format that keeps floats (EXR and the like)?
Bool HoldsFloats(const String& path);

/// An unreadable file, or one without pixels, is an illegal-argument error that names the file and the
/// reason.
Result<Picture> ReadPicture(const String& path);

/// Writes in the format that the file's suffix names; 8 bits for formats that hold integers (values are
/// clamped to [0, 1]), floats for EXR and the like. Writes to a temporary file first, so that a failure
/// leaves what was there before.
Result<void> WritePicture(const String& path, const Picture& picture);

/// The picture scaled to another size, filtered.
Result<Picture> ResizePicture(const Picture& picture, Int width, Int height);

/// One channel: the luminance (Rec. 709 weights) of three or more channels, else the first one.
Picture ToLuminance(const Picture& picture);

/// Channel `channel` of a pixel of any number of channels: grey stands for all colours, what has no alpha is
/// opaque.
Float32 ChannelValue(const Float32* pixel, Int channels, Int channel);

} // namespace norvi
