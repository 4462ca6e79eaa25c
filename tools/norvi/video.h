// Videos of pictures, made by the program ffmpeg where it is installed.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Can a video be made? Fails where ffmpeg is not on the search path of programs, and where the pictures are
/// not made every so many steps.
Result<void> CheckVideo(Int every);

/// Shows the pictures one after the other, 30 a second, as H.264 in the file `path`. Waits for ffmpeg to end;
/// its own words go to the standard error stream.
Result<void> WriteVideo(const String& path, const BaseArray<String>& pictures);

} // namespace norvi
