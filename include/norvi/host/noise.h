// Noise generators, made by class id.
#pragma once

#include <norvi/host/dictionary.h>
#include <norvi/host/object.h>

namespace norvi {

/// Ids of the noise classes, in the registry registryid::NoiseClasses.
namespace noiseclassid {
inline constexpr const char* Perlin = "net.norvi.render.rendernoiseclass.perlin";
inline constexpr const char* Turbulence = "net.norvi.render.rendernoiseclass.turbulence";
inline constexpr const char* Gaseous = "net.norvi.render.rendernoiseclass.gaseous";
inline constexpr const char* Electric = "net.norvi.render.rendernoiseclass.electric";
inline constexpr const char* Box = "net.norvi.render.rendernoiseclass.box";
inline constexpr const char* BlisteredTurbulence = "net.norvi.render.rendernoiseclass.blisteredturbulence";
inline constexpr const char* DisplacedTurbulence = "net.norvi.render.rendernoiseclass.displacedturbulence";
inline constexpr const char* Buya = "net.norvi.render.rendernoiseclass.buya";
inline constexpr const char* Cranal = "net.norvi.render.rendernoiseclass.cranal";
inline constexpr const char* Dents = "net.norvi.render.rendernoiseclass.dents";
inline constexpr const char* Hama = "net.norvi.render.rendernoiseclass.hama";
inline constexpr const char* Luka = "net.norvi.render.rendernoiseclass.luka";
inline constexpr const char* Mod = "net.norvi.render.rendernoiseclass.mod";
inline constexpr const char* Naki = "net.norvi.render.rendernoiseclass.naki";
inline constexpr const char* Nutous = "net.norvi.render.rendernoiseclass.nutous";
inline constexpr const char* Ober = "net.norvi.render.rendernoiseclass.ober";
inline constexpr const char* Pezo = "net.norvi.render.rendernoiseclass.pezo";
inline constexpr const char* Poxo = "net.norvi.render.rendernoiseclass.poxo";
inline constexpr const char* Sema = "net.norvi.render.rendernoiseclass.sema";
inline constexpr const char* Stupl = "net.norvi.render.rendernoiseclass.stupl";
inline constexpr const char* Vl = "net.norvi.render.rendernoiseclass.vl";
inline constexpr const char* WavyTurbulence = "net.norvi.render.rendernoiseclass.wavyturbulence";
inline constexpr const char* Zada = "net.norvi.render.rendernoiseclass.zada";
inline constexpr const char* Cell = "net.norvi.render.rendernoiseclass.cell";
} // namespace noiseclassid

/// A generator of one kind of noise. Immutable after Init; Noise may be called from many threads.
class NoiseInterface : public ObjectInterface {
  public:
    static constexpr const char* InterfaceId = "net.norvi.render.interface.rendernoise";

    /// Until it is called a noise has the seed 0 and the power 10.
    /// @param permutationTablePower the lattice repeats every 2^power cells; others than 1 to 16 are an
    /// illegal-argument error that changes nothing.
    /// @param settings reserved for generators with settings of their own; those of this library have none.
    virtual Result<void> Init(Int32 seed, Int32 permutationTablePower,
                              const DataDictionary& settings) noexcept = 0;

    /// The value at a position (in cells) and time; NoiseInfo states its range. Coordinates and times that
    /// are not finite, or 2^20 and beyond, count as 0, so that the value is always finite. In time every
    /// noise of this library repeats after 1024 units.
    virtual Float Noise(const Vector32& position, Float time) const noexcept = 0;
};

using NoiseRef = Ref<NoiseInterface>;

/// Modes are the numbers that noises are chosen by: 0 to NoiseModeCount - 1.
inline constexpr UInt32 NoiseModeCount = 25;

/// The class of a mode. 1 and 2 both are turbulence, and so is every mode that there is not.
const char* NoiseClassIdOfMode(UInt32 mode);

/// What can be said of a generator without making one.
struct NoiseInfo {
    const char* id;
    Float minimum; ///< No value lies below.
    Float maximum; ///< No value lies above.
    Bool isContinuous;
    const char* description; ///< One line.
};

/// The generator of this library with that class id, or null.
const NoiseInfo* FindNoiseInfo(std::string_view classId);

} // namespace norvi
