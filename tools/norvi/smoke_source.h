// The picture that gives off a simulation's smoke.
#pragma once

#include "norvi/picture.h"

namespace norvi {

/// The colour space that the simulation computes in.
inline constexpr const char* WorkingSpace = "lin_rec709";

/// Any picture as smoke: four channels, colour in the working space times density, and density, which is the
/// largest colour channel times alpha, at most 1. So black gives off nothing. Pictures of formats that hold
/// whole numbers are sRGB, others are in the working space. Values that are not numbers count as 0.
Result<Picture> ReadSmokeSource(const String& path, Int width, Int height);

/// The source where there is none from the user: a row of embers in the colours of a sunset.
Picture EmberPicture(Int width, Int height);

} // namespace norvi
