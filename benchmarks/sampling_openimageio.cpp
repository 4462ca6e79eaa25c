// OpenImageIO's texture system, without mip levels.
#include <cstring>
#include <string>

#include <OpenImageIO/imagecache.h>
#include <OpenImageIO/imageio.h>
#include <OpenImageIO/texture.h>

#include "sampling_scene.h"

namespace norvi::benchmark {

namespace {

using namespace OIIO;

constexpr int TileExtent = 64;

/// The texels that the next textures are read from.
const SamplingInput* g_input = nullptr;

/// Hands over the texels of `g_input` as a tiled file.
class MemoryInput final : public ImageInput {
  public:
    const char* format_name() const override { return "memory"; }
    int supports(string_view) const override { return 0; }
    bool open(const std::string&, ImageSpec& spec) override {
        const SamplingScene& scene = g_input->scene;
        m_spec =
            ImageSpec(scene.extent, scene.extent, scene.channels, scene.IsFiltered() ? TypeFloat : TypeUInt8);
        m_spec.full_depth = m_spec.depth = scene.dimensions > 2 ? scene.extent : 1;
        m_spec.tile_width = m_spec.tile_height = TileExtent;
        m_spec.tile_depth = scene.dimensions > 2 ? TileExtent : 1;
        m_spec.attribute("textureformat", scene.dimensions > 2 ? "Volume Texture" : "Plain Texture");
        spec = m_spec;
        return true;
    }
    bool close() override { return true; }
    bool read_native_scanline(int, int, int, int, void*) override { return false; }
    bool read_native_tile(int, int, int x, int y, int z, void* data) override {
        const std::size_t texel = m_spec.pixel_bytes(), row = texel * TileExtent;
        auto* target = static_cast<char*>(data);
        for (int layer = z; layer < z + m_spec.tile_depth; ++layer)
            for (int line = y; line < y + TileExtent; ++line, target += row) {
                const int first = (layer * m_spec.height + line) * m_spec.width + x;
                std::memcpy(target, &g_input->texels[static_cast<std::size_t>(first) * texel], row);
            }
        return true;
    }
};

TextureOpt::Wrap WrapOf(UInt32 wrap) {
    return wrap == WRAP_REPEAT  ? TextureOpt::WrapPeriodic
           : wrap == WRAP_CLAMP ? TextureOpt::WrapClamp
                                : TextureOpt::WrapBlack;
}

class OpenImageIOTexture {
  public:
    explicit OpenImageIOTexture(const SamplingInput& input) : input_(input), sums_(4 * BlockCount) {
        static int count = 0;
        const ustring name("memory" + std::to_string(count++));
        system_ = TextureSystem::create(false);
        system_->attribute("max_memory_MB", 1024.0f);
        g_input = &input_;
        auto* cache = static_cast<ImageCache*>(system_->imagecache());
        cache->add_file(name, []() -> ImageInput* { return new MemoryInput; });
        handle_ = system_->get_texture_handle(name);
        options_.mipmode = TextureOpt::MipModeNoMIP;
        options_.interpmode =
            input.scene.IsFiltered() ? TextureOpt::InterpBilinear : TextureOpt::InterpClosest;
        options_.swrap = options_.twrap = options_.rwrap = WrapOf(input.scene.wrap);
    }
    ~OpenImageIOTexture() { TextureSystem::destroy(system_); }
    OpenImageIOTexture(const OpenImageIOTexture&) = delete;

    void Run() {
        ForEachBlock([this](int block) {
            TextureSystem::Perthread* thread = system_->get_perthread_info();
            TextureOpt options = options_;
            float sum[4]{};
            for (int i = block * SamplesPerBlock; i < (block + 1) * SamplesPerBlock; ++i) {
                float sample[4]{};
                Sample(thread, options, static_cast<std::size_t>(i), sample);
                for (int c = 0; c < 4; ++c)
                    sum[c] += sample[c];
            }
            std::memcpy(&sums_[static_cast<std::size_t>(block) * 4], sum, sizeof(sum));
        });
    }
    const float* GetSums() const { return sums_.data(); }

  private:
    void Sample(TextureSystem::Perthread* thread, TextureOpt& options, std::size_t i, float* sample) {
        const SamplingScene& scene = input_.scene;
        if (scene.dimensions == 3) {
            const float* p = &input_.coordinates[3 * i];
            system_->texture3d(handle_, thread, options, {p[0], p[1], p[2]}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0},
                               scene.channels, sample);
        } else if (scene.IsFiltered()) {
            const float* p = &input_.coordinates[2 * i];
            system_->texture(handle_, thread, options, p[0], p[1], 0, 0, 0, 0, scene.channels, sample);
        } else {
            const Int32* p = &input_.positions[2 * i];
            const float texel = 1.0f / static_cast<float>(scene.extent);
            system_->texture(handle_, thread, options, (static_cast<float>(p[0]) + 0.5f) * texel,
                             (static_cast<float>(p[1]) + 0.5f) * texel, 0, 0, 0, 0, 1, sample);
            sample[0] *= 255;
        }
    }

    SamplingInput input_;
    TextureSystem* system_ = nullptr;
    TextureSystem::TextureHandle* handle_ = nullptr;
    TextureOpt options_;
    std::vector<float> sums_;
};

class OpenImageIOPeer final : public SamplingPeer {
  public:
    const char* GetName() const override { return "OpenImageIO"; }
    PreparedSampler Prepare(const SamplingInput& input) override {
        if (input.scene.isSrgb)
            return {};
        auto texture = std::make_shared<OpenImageIOTexture>(input);
        return {[texture] { texture->Run(); }, texture->GetSums()};
    }
};

} // namespace

SamplingPeerRef MakeOpenImageIOPeer() {
    return std::make_unique<OpenImageIOPeer>();
}

} // namespace norvi::benchmark
