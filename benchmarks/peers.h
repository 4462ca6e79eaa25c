// The work of the shipped kernels as plain loops, run by what a user would pick instead.
#pragma once

#include <cstdint>

namespace norvi::benchmark {

enum class Runner { Serial, OpenMPStatic, OpenMPDynamic, TBB };
inline constexpr Runner AllRunners[] = {Runner::Serial, Runner::OpenMPStatic, Runner::OpenMPDynamic,
                                        Runner::TBB};
const char* NameOf(Runner runner);

void Doubler(Runner runner, std::uint32_t* data, std::uint32_t scale, int count);
void Saxpy(Runner runner, const float* x, float* y, float a, int count);
void Heat2D(Runner runner, const float* temperature, float* result, int width, int height, float diffusion);
void Mandelbrot(Runner runner, std::uint32_t* iterations, int width, int height, int maxIterations,
                float centreX, float centreY, float scale);
/// Bodies are (x, y, z, mass), velocities (x, y, z).
void NBody(Runner runner, const float* bodies, float* bodiesNext, float* velocities, int count,
           float timeStep);
/// An empty loop of `count` steps on one element each, for latencies.
void Touch(Runner runner, std::uint32_t* data, int count);

} // namespace norvi::benchmark
