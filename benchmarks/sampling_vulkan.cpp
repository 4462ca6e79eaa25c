// The sampler of a Vulkan driver that runs on the processor (lavapipe), in a compute shader.
#include <vulkan/vulkan.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sampling_scene.h"

namespace norvi::benchmark {

namespace {

namespace load2D {
#include "sampling_load_2d.h"
}
namespace sample2D {
#include "sampling_2d.h"
}
namespace sample3D {
#include "sampling_3d.h"
}

void Check(VkResult code, const char* what) {
    if (code == VK_SUCCESS)
        return;
    std::fprintf(stderr, "sampling_benchmark: Vulkan cannot %s: error %d\n", what, code);
    std::exit(1);
}

/// Zeros behind the type.
template <typename T>
T Structure(VkStructureType type) {
    T structure{};
    structure.sType = type;
    return structure;
}

struct Device {
    VkPhysicalDevice physical;
    VkDevice device;
    VkQueue queue;
};

/// Undoes what was done, last first, when it ends.
class Undo {
  public:
    Undo() = default;
    Undo(const Undo&) = delete;
    ~Undo() {
        while (!steps_.empty()) {
            steps_.back()();
            steps_.pop_back();
        }
    }
    void Add(std::function<void()> step) { steps_.push_back(std::move(step)); }

  private:
    std::vector<std::function<void()>> steps_;
};

struct Buffer {
    VkBuffer buffer;
    void* data; ///< mapped
};

class VulkanTexture {
  public:
    VulkanTexture(const Device& device, const SamplingInput& input) : device_(device), scene_(input.scene) {
        MakeCommandBuffer();
        MakeImage(input);
        MakeSampler();
        sums_ = MakeBuffer(sizeof(float) * 4 * BlockCount, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
        MakeDescriptorSet();
        MakePipeline();
        Record([this] {
            vkCmdBindPipeline(commands_, VK_PIPELINE_BIND_POINT_COMPUTE, pipeline_);
            vkCmdBindDescriptorSets(commands_, VK_PIPELINE_BIND_POINT_COMPUTE, pipelineLayout_, 0, 1,
                                    &descriptorSet_, 0, nullptr);
            vkCmdDispatch(commands_, BlockCount / 64, 1, 1);
        });
    }

    void Run() {
        auto submit = Structure<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
        submit.commandBufferCount = 1;
        submit.pCommandBuffers = &commands_;
        Check(vkQueueSubmit(device_.queue, 1, &submit, fence_), "submit");
        Check(vkWaitForFences(device_.device, 1, &fence_, VK_TRUE, UINT64_MAX), "wait");
        Check(vkResetFences(device_.device, 1, &fence_), "reset a fence");
    }
    const float* GetSums() const { return static_cast<const float*>(sums_.data); }

  private:
    /// Makes a Vulkan object of the device that ends with this one.
    template <typename Object, typename Info>
    Object Make(VkResult (*make)(VkDevice, const Info*, const VkAllocationCallbacks*, Object*),
                void (*destroy)(VkDevice, Object, const VkAllocationCallbacks*), const Info& info,
                const char* what) {
        Object object;
        Check(make(device_.device, &info, nullptr, &object), what);
        undo_.Add([device = device_.device, object, destroy] { destroy(device, object, nullptr); });
        return object;
    }

    /// The driver has one type of memory, which all that it makes can lie in.
    VkDeviceMemory MakeMemory(VkDeviceSize bytes) {
        auto info = Structure<VkMemoryAllocateInfo>(VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO);
        info.allocationSize = bytes;
        return Make(vkAllocateMemory, vkFreeMemory, info, "allocate memory");
    }

    Buffer MakeBuffer(VkDeviceSize bytes, VkBufferUsageFlags usage) {
        auto info = Structure<VkBufferCreateInfo>(VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO);
        info.size = bytes;
        info.usage = usage;
        Buffer result{Make(vkCreateBuffer, vkDestroyBuffer, info, "make a buffer"), nullptr};
        VkMemoryRequirements requirements;
        vkGetBufferMemoryRequirements(device_.device, result.buffer, &requirements);
        const VkDeviceMemory memory = MakeMemory(requirements.size);
        Check(vkBindBufferMemory(device_.device, result.buffer, memory, 0), "bind a buffer");
        Check(vkMapMemory(device_.device, memory, 0, VK_WHOLE_SIZE, 0, &result.data), "map memory");
        return result;
    }

    void MakeCommandBuffer() {
        auto pool = Structure<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
        pool.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
        auto info = Structure<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
        info.commandPool = Make(vkCreateCommandPool, vkDestroyCommandPool, pool, "make a command pool");
        info.commandBufferCount = 1;
        Check(vkAllocateCommandBuffers(device_.device, &info, &commands_), "make a command buffer");
        fence_ = Make(vkCreateFence, vkDestroyFence,
                      Structure<VkFenceCreateInfo>(VK_STRUCTURE_TYPE_FENCE_CREATE_INFO), "make a fence");
    }

    void Record(const std::function<void()>& commands) {
        const auto begin = Structure<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
        Check(vkBeginCommandBuffer(commands_, &begin), "begin a command buffer");
        commands();
        Check(vkEndCommandBuffer(commands_), "end a command buffer");
    }

    VkFormat GetFormat() const {
        if (!scene_.IsFiltered())
            return VK_FORMAT_R8_UINT;
        return scene_.channels == 4 ? VK_FORMAT_R32G32B32A32_SFLOAT : VK_FORMAT_R32_SFLOAT;
    }

    VkExtent3D GetExtent() const {
        const auto extent = static_cast<std::uint32_t>(scene_.extent);
        return {extent, extent, scene_.dimensions > 2 ? extent : 1};
    }

    void MakeImage(const SamplingInput& input) {
        auto info = Structure<VkImageCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO);
        info.imageType = scene_.dimensions > 2 ? VK_IMAGE_TYPE_3D : VK_IMAGE_TYPE_2D;
        info.format = GetFormat();
        info.extent = GetExtent();
        info.mipLevels = info.arrayLayers = 1;
        info.samples = VK_SAMPLE_COUNT_1_BIT;
        info.usage = VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
        image_ = Make(vkCreateImage, vkDestroyImage, info, "make an image");
        VkMemoryRequirements requirements;
        vkGetImageMemoryRequirements(device_.device, image_, &requirements);
        Check(vkBindImageMemory(device_.device, image_, MakeMemory(requirements.size), 0), "bind an image");
        Upload(input);

        auto view = Structure<VkImageViewCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO);
        view.image = image_;
        view.viewType = scene_.dimensions > 2 ? VK_IMAGE_VIEW_TYPE_3D : VK_IMAGE_VIEW_TYPE_2D;
        view.format = info.format;
        view.subresourceRange = WholeImage;
        view_ = Make(vkCreateImageView, vkDestroyImageView, view, "make an image view");
    }

    void Upload(const SamplingInput& input) {
        const Buffer source = MakeBuffer(input.texels.size(), VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
        std::memcpy(source.data, input.texels.data(), input.texels.size());
        Record([&] {
            auto barrier = Structure<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
            barrier.newLayout = VK_IMAGE_LAYOUT_GENERAL;
            barrier.dstAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
            barrier.image = image_;
            barrier.subresourceRange = WholeImage;
            vkCmdPipelineBarrier(commands_, VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT,
                                 0, 0, nullptr, 0, nullptr, 1, &barrier);
            VkBufferImageCopy copy{};
            copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
            copy.imageExtent = GetExtent();
            vkCmdCopyBufferToImage(commands_, source.buffer, image_, VK_IMAGE_LAYOUT_GENERAL, 1, &copy);
        });
        Run();
    }

    void MakeSampler() {
        auto info = Structure<VkSamplerCreateInfo>(VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO);
        info.magFilter = info.minFilter = scene_.IsFiltered() ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
        info.addressModeU = info.addressModeV = info.addressModeW =
            scene_.wrap == WRAP_REPEAT  ? VK_SAMPLER_ADDRESS_MODE_REPEAT
            : scene_.wrap == WRAP_CLAMP ? VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE
                                        : VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_BORDER;
        info.borderColor = VK_BORDER_COLOR_FLOAT_TRANSPARENT_BLACK;
        sampler_ = Make(vkCreateSampler, vkDestroySampler, info, "make a sampler");
    }

    void MakeDescriptorSet() {
        constexpr VkDescriptorType types[] = {VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER,
                                              VK_DESCRIPTOR_TYPE_STORAGE_BUFFER};
        VkDescriptorSetLayoutBinding bindings[2]{};
        VkDescriptorPoolSize sizes[2];
        for (std::uint32_t i = 0; i < 2; ++i) {
            bindings[i] = {i, types[i], 1, VK_SHADER_STAGE_COMPUTE_BIT, nullptr};
            sizes[i] = {types[i], 1};
        }
        auto layout =
            Structure<VkDescriptorSetLayoutCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO);
        layout.bindingCount = 2;
        layout.pBindings = bindings;
        setLayout_ = Make(vkCreateDescriptorSetLayout, vkDestroyDescriptorSetLayout, layout,
                          "make a descriptor set layout");
        auto pool = Structure<VkDescriptorPoolCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO);
        pool.maxSets = 1;
        pool.poolSizeCount = 2;
        pool.pPoolSizes = sizes;
        auto info = Structure<VkDescriptorSetAllocateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO);
        info.descriptorPool =
            Make(vkCreateDescriptorPool, vkDestroyDescriptorPool, pool, "make a descriptor pool");
        info.descriptorSetCount = 1;
        info.pSetLayouts = &setLayout_;
        Check(vkAllocateDescriptorSets(device_.device, &info, &descriptorSet_), "make a descriptor set");

        const VkDescriptorImageInfo image{sampler_, view_, VK_IMAGE_LAYOUT_GENERAL};
        const VkDescriptorBufferInfo buffer{sums_.buffer, 0, VK_WHOLE_SIZE};
        VkWriteDescriptorSet writes[2]{};
        for (std::uint32_t i = 0; i < 2; ++i) {
            writes[i].sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
            writes[i].dstSet = descriptorSet_;
            writes[i].dstBinding = i;
            writes[i].descriptorCount = 1;
            writes[i].descriptorType = types[i];
        }
        writes[0].pImageInfo = &image;
        writes[1].pBufferInfo = &buffer;
        vkUpdateDescriptorSets(device_.device, 2, writes, 0, nullptr);
    }

    VkShaderModule MakeShader() {
        auto info = Structure<VkShaderModuleCreateInfo>(VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO);
        const auto use = [&](const auto& words) {
            info.codeSize = sizeof(words);
            info.pCode = words;
        };
        if (!scene_.IsFiltered())
            use(load2D::code);
        else if (scene_.dimensions == 2)
            use(sample2D::code);
        else
            use(sample3D::code);
        return Make(vkCreateShaderModule, vkDestroyShaderModule, info, "make a shader");
    }

    void MakePipeline() {
        const struct {
            VkBool32 isRandom;
            std::uint32_t extent;
            float firstCoordinate;
            std::uint32_t samplesPerBlock, blockCount;
        } constants{scene_.isRandom, static_cast<std::uint32_t>(scene_.extent), scene_.firstCoordinate,
                    SamplesPerBlock, BlockCount};
        VkSpecializationMapEntry entries[5];
        for (std::uint32_t i = 0; i < 5; ++i)
            entries[i] = {i, 4 * i, 4};
        const VkSpecializationInfo specialization{5, entries, sizeof(constants), &constants};
        auto layout = Structure<VkPipelineLayoutCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO);
        layout.setLayoutCount = 1;
        layout.pSetLayouts = &setLayout_;
        pipelineLayout_ =
            Make(vkCreatePipelineLayout, vkDestroyPipelineLayout, layout, "make a pipeline layout");
        auto info = Structure<VkComputePipelineCreateInfo>(VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO);
        info.layout = pipelineLayout_;
        info.stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
        info.stage.stage = VK_SHADER_STAGE_COMPUTE_BIT;
        info.stage.module = MakeShader();
        info.stage.pName = "main";
        info.stage.pSpecializationInfo = &specialization;
        Check(vkCreateComputePipelines(device_.device, VK_NULL_HANDLE, 1, &info, nullptr, &pipeline_),
              "make a pipeline");
        undo_.Add([device = device_.device, pipeline = pipeline_] {
            vkDestroyPipeline(device, pipeline, nullptr);
        });
    }

    static constexpr VkImageSubresourceRange WholeImage{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};

    Device device_;
    SamplingScene scene_;
    Undo undo_;
    VkCommandBuffer commands_;
    VkFence fence_;
    VkImage image_;
    VkImageView view_;
    VkSampler sampler_;
    Buffer sums_;
    VkDescriptorSetLayout setLayout_;
    VkDescriptorSet descriptorSet_;
    VkPipelineLayout pipelineLayout_;
    VkPipeline pipeline_;
};

class VulkanPeer final : public SamplingPeer {
  public:
    explicit VulkanPeer(const Device& device) : device_(device) {}
    const char* GetName() const override { return "lavapipe"; }
    PreparedSampler Prepare(const SamplingInput& input) override {
        if (input.scene.isSrgb)
            return {};
        auto texture = std::make_shared<VulkanTexture>(device_, input);
        return {[texture] { texture->Run(); }, texture->GetSums()};
    }

  private:
    Device device_;
};

VkPhysicalDevice FindProcessor(VkInstance instance) {
    VkPhysicalDevice devices[16];
    std::uint32_t count = 16;
    const VkResult code = vkEnumeratePhysicalDevices(instance, &count, devices);
    if (code != VK_SUCCESS && code != VK_INCOMPLETE)
        return VK_NULL_HANDLE;
    for (std::uint32_t i = 0; i < count; ++i) {
        VkPhysicalDeviceProperties properties;
        vkGetPhysicalDeviceProperties(devices[i], &properties);
        if (properties.deviceType == VK_PHYSICAL_DEVICE_TYPE_CPU)
            return devices[i];
    }
    return VK_NULL_HANDLE;
}

} // namespace

SamplingPeerRef MakeVulkanPeer() {
    const auto instanceInfo = Structure<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
    VkInstance instance;
    Device device{};
    if (vkCreateInstance(&instanceInfo, nullptr, &instance) == VK_SUCCESS)
        device.physical = FindProcessor(instance);
    if (!device.physical) {
        std::printf("left out: there is no Vulkan device on the processor\n");
        return nullptr;
    }
    const float priority = 1;
    auto queue = Structure<VkDeviceQueueCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO);
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;
    auto info = Structure<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
    info.queueCreateInfoCount = 1;
    info.pQueueCreateInfos = &queue;
    Check(vkCreateDevice(device.physical, &info, nullptr, &device.device), "make a device");
    vkGetDeviceQueue(device.device, 0, 0, &device.queue);
    return std::make_unique<VulkanPeer>(device);
}

} // namespace norvi::benchmark
