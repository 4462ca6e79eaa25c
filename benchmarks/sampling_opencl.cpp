// OpenCL's image reads on the processor (PoCL).
#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "sampling_scene.h"

namespace norvi::benchmark {

namespace {

constexpr const char* Source = R"(
constant sampler_t filtered = CLK_NORMALIZED_COORDS_TRUE | CLK_FILTER_LINEAR | WRAP;
constant sampler_t plain = CLK_NORMALIZED_COORDS_FALSE | CLK_FILTER_NEAREST | CLK_ADDRESS_CLAMP_TO_EDGE;

kernel void sample_2d(read_only image2d_t picture, global const float* positions, global float4* sums) {
    int block = get_global_id(0);
    float4 sum = 0;
    for (int i = block * BLOCK; i < (block + 1) * BLOCK; ++i)
        sum += read_imagef(picture, filtered, vload2(i, positions));
    sums[block] = sum;
}

kernel void sample_3d(read_only image3d_t picture, global const float* positions, global float4* sums) {
    int block = get_global_id(0);
    float4 sum = 0;
    for (int i = block * BLOCK; i < (block + 1) * BLOCK; ++i)
        sum += read_imagef(picture, filtered, (float4)(vload3(i, positions), 0));
    sums[block] = sum;
}

kernel void load_2d(read_only image2d_t picture, global const int* positions, global float4* sums) {
    int block = get_global_id(0);
    float4 sum = 0;
    for (int i = block * BLOCK; i < (block + 1) * BLOCK; ++i)
        sum += convert_float4(read_imageui(picture, plain, vload2(i, positions)));
    sums[block] = sum;
}
)";

void Check(cl_int code, const char* what) {
    if (code == CL_SUCCESS)
        return;
    std::fprintf(stderr, "sampling_benchmark: OpenCL cannot %s: error %d\n", what, code);
    std::exit(1);
}

struct Device {
    cl_device_id id;
    cl_context context;
    cl_command_queue queue;
};

const char* WrapOf(UInt32 wrap) {
    return wrap == WRAP_REPEAT  ? "CLK_ADDRESS_REPEAT"
           : wrap == WRAP_CLAMP ? "CLK_ADDRESS_CLAMP_TO_EDGE"
                                : "CLK_ADDRESS_CLAMP";
}

class OpenCLTexture {
  public:
    OpenCLTexture(const Device& device, const SamplingInput& input) : device_(device), sums_(4 * BlockCount) {
        const SamplingScene& scene = input.scene;
        Build(scene);
        image_ = MakeImage(input);
        const void* places =
            scene.IsFiltered() ? static_cast<const void*>(input.coordinates.data()) : input.positions.data();
        places_ = MakeBuffer(CL_MEM_READ_ONLY | CL_MEM_COPY_HOST_PTR,
                             sizeof(float) * SampleCount * static_cast<std::size_t>(scene.dimensions),
                             const_cast<void*>(places));
        result_ = MakeBuffer(CL_MEM_USE_HOST_PTR, sums_.size() * sizeof(float), sums_.data());
        cl_uint index = 0;
        for (const cl_mem& argument : {image_, places_, result_})
            Check(clSetKernelArg(kernel_, index++, sizeof(argument), &argument), "set an argument");
    }
    ~OpenCLTexture() {
        for (const cl_mem memory : {image_, places_, result_})
            clReleaseMemObject(memory);
        clReleaseKernel(kernel_);
        clReleaseProgram(program_);
    }
    OpenCLTexture(const OpenCLTexture&) = delete;

    void Run() {
        const std::size_t count = BlockCount, group = 64;
        Check(clEnqueueNDRangeKernel(device_.queue, kernel_, 1, nullptr, &count, &group, 0, nullptr, nullptr),
              "run the kernel");
        Check(clFinish(device_.queue), "finish");
    }
    const float* GetSums() const { return sums_.data(); }

  private:
    void Build(const SamplingScene& scene) {
        cl_int code;
        const char* source = Source;
        program_ = clCreateProgramWithSource(device_.context, 1, &source, nullptr, &code);
        Check(code, "make a program");
        const std::string options =
            std::string("-DWRAP=") + WrapOf(scene.wrap) + " -DBLOCK=" + std::to_string(SamplesPerBlock);
        Check(clBuildProgram(program_, 1, &device_.id, options.c_str(), nullptr, nullptr),
              "build the program");
        const char* name = !scene.IsFiltered()     ? "load_2d"
                           : scene.dimensions == 2 ? "sample_2d"
                                                   : "sample_3d";
        kernel_ = clCreateKernel(program_, name, &code);
        Check(code, "make a kernel");
    }

    cl_mem MakeImage(const SamplingInput& input) {
        const SamplingScene& scene = input.scene;
        const cl_image_format format = {
            static_cast<cl_channel_order>(scene.channels == 4 ? CL_RGBA : CL_R),
            static_cast<cl_channel_type>(scene.IsFiltered() ? CL_FLOAT : CL_UNSIGNED_INT8)};
        const auto extent = static_cast<std::size_t>(scene.extent);
        cl_image_desc description{};
        description.image_type = scene.dimensions == 2 ? CL_MEM_OBJECT_IMAGE2D : CL_MEM_OBJECT_IMAGE3D;
        description.image_width = description.image_height = extent;
        description.image_depth = scene.dimensions == 2 ? 1 : extent;
        cl_int code;
        const cl_mem image = clCreateImage(device_.context, CL_MEM_READ_ONLY | CL_MEM_COPY_HOST_PTR, &format,
                                           &description, const_cast<UChar*>(input.texels.data()), &code);
        Check(code, "make an image");
        return image;
    }

    cl_mem MakeBuffer(cl_mem_flags flags, std::size_t bytes, void* data) {
        cl_int code;
        const cl_mem buffer = clCreateBuffer(device_.context, flags, bytes, data, &code);
        Check(code, "make a buffer");
        return buffer;
    }

    Device device_;
    cl_program program_ = nullptr;
    cl_kernel kernel_ = nullptr;
    cl_mem image_ = nullptr, places_ = nullptr, result_ = nullptr;
    std::vector<float> sums_;
};

class OpenCLPeer final : public SamplingPeer {
  public:
    explicit OpenCLPeer(const Device& device) : device_(device) {}
    const char* GetName() const override { return "PoCL"; }
    PreparedSampler Prepare(const SamplingInput& input) override {
        if (input.scene.isSrgb)
            return {};
        auto texture = std::make_shared<OpenCLTexture>(device_, input);
        return {[texture] { texture->Run(); }, texture->GetSums()};
    }

  private:
    Device device_;
};

} // namespace

SamplingPeerRef MakeOpenCLPeer() {
    cl_platform_id platform;
    Device device;
    cl_int code = clGetPlatformIDs(1, &platform, nullptr);
    if (code == CL_SUCCESS)
        code = clGetDeviceIDs(platform, CL_DEVICE_TYPE_CPU, 1, &device.id, nullptr);
    if (code != CL_SUCCESS) {
        std::printf("left out: there is no OpenCL device on the processor\n");
        return nullptr;
    }
    device.context = clCreateContext(nullptr, 1, &device.id, nullptr, nullptr, &code);
    Check(code, "make a context");
    device.queue = clCreateCommandQueue(device.context, device.id, 0, &code);
    Check(code, "make a queue");
    return std::make_unique<OpenCLPeer>(device);
}

} // namespace norvi::benchmark
