#include "peers.h"

#include <algorithm>
#include <cmath>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

namespace norvi::benchmark {

namespace {

// OpenMP's dynamic schedule hands out runs of this many: one at a time would only measure its lock.
constexpr int DynamicRun = 1024;

/// Calls body(begin, end) over [0, count) as the runner would; bodies are loops that the compiler vectorises.
template <typename Body>
void ForRanges(Runner runner, int count, int dynamicRun, const Body& body) {
    switch (runner) {
    case Runner::Serial:
        body(0, count);
        break;
    case Runner::OpenMPStatic: {
        const int parts = 2 * 64;
        const int size = std::max(1, (count + parts - 1) / parts);
        const int runs = (count + size - 1) / size;
#pragma omp parallel for schedule(static)
        for (int i = 0; i < runs; ++i)
            body(i * size, std::min((i + 1) * size, count));
        break;
    }
    case Runner::OpenMPDynamic: {
        const int runs = (count + dynamicRun - 1) / dynamicRun;
#pragma omp parallel for schedule(dynamic)
        for (int i = 0; i < runs; ++i)
            body(i * dynamicRun, std::min((i + 1) * dynamicRun, count));
        break;
    }
    case Runner::TBB:
        tbb::parallel_for(tbb::blocked_range<int>(0, count),
                          [&](const tbb::blocked_range<int>& range) { body(range.begin(), range.end()); });
        break;
    }
}

} // namespace

const char* NameOf(Runner runner) {
    static constexpr const char* names[] = {"serial", "OpenMP static", "OpenMP dynamic", "oneTBB"};
    return names[static_cast<int>(runner)];
}

void Doubler(Runner runner, std::uint32_t* data, std::uint32_t scale, int count) {
    ForRanges(runner, count, DynamicRun, [=](int begin, int end) {
        for (int i = begin; i < end; ++i)
            data[i] = static_cast<std::uint32_t>(i) * scale;
    });
}

void Saxpy(Runner runner, const float* x, float* y, float a, int count) {
    ForRanges(runner, count, DynamicRun, [=](int begin, int end) {
#pragma GCC ivdep
        for (int i = begin; i < end; ++i)
            y[i] = a * x[i] + y[i];
    });
}

void Heat2D(Runner runner, const float* temperature, float* result, int width, int height, float diffusion) {
    ForRanges(runner, height - 2, 8, [=](int begin, int end) {
        for (int row = begin + 1; row < end + 1; ++row) {
            const float* t = temperature + row * width;
            float* r = result + row * width;
#pragma GCC ivdep
            for (int x = 1; x < width - 1; ++x)
                r[x] = t[x] + diffusion * (t[x - 1] + t[x + 1] + (t[x - width] + t[x + width]) - 4.0f * t[x]);
        }
    });
}

void Mandelbrot(Runner runner, std::uint32_t* iterations, int width, int height, int maxIterations,
                float centreX, float centreY, float scale) {
    ForRanges(runner, height, 1, [=](int begin, int end) {
        for (int row = begin; row < end; ++row)
            for (int column = 0; column < width; ++column) {
                const float cx = centreX + static_cast<float>(column - width / 2) * scale;
                const float cy = centreY + static_cast<float>(row - height / 2) * scale;
                float zx = 0, zy = 0;
                int steps = 0;
                while (steps < maxIterations && zx * zx + zy * zy <= 4.0f) {
                    const float next = zx * zx - zy * zy + cx;
                    zy = 2.0f * zx * zy + cy;
                    zx = next;
                    ++steps;
                }
                iterations[row * width + column] = static_cast<std::uint32_t>(steps);
            }
    });
}

void NBody(Runner runner, const float* bodies, float* bodiesNext, float* velocities, int count,
           float timeStep) {
    constexpr float softening = 0.0001f;
    ForRanges(runner, count, 16, [=](int begin, int end) {
        for (int index = begin; index < end; ++index) {
            const float* body = bodies + index * 4;
            float ax = 0, ay = 0, az = 0;
            for (int i = 0; i < count; ++i) {
                const float* other = bodies + i * 4;
                const float dx = other[0] - body[0], dy = other[1] - body[1], dz = other[2] - body[2];
                const float inverse = 1.0f / std::sqrt(dx * dx + dy * dy + dz * dz + softening);
                const float factor = other[3] * inverse * inverse * inverse;
                ax += dx * factor, ay += dy * factor, az += dz * factor;
            }
            float* velocity = velocities + index * 3;
            velocity[0] += ax * timeStep, velocity[1] += ay * timeStep, velocity[2] += az * timeStep;
            for (int axis = 0; axis < 3; ++axis)
                bodiesNext[index * 4 + axis] = body[axis] + velocity[axis] * timeStep;
            bodiesNext[index * 4 + 3] = body[3];
        }
    });
}

void Touch(Runner runner, std::uint32_t* data, int count) {
    Doubler(runner, data, 3, count);
}

} // namespace norvi::benchmark
