#include "parser_glslang.h"

#include <cstdio>
#include <cstdlib>

#ifdef NORVI_WITH_GLSLANG
#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>
#endif

namespace norvi::benchmark {

#ifdef NORVI_WITH_GLSLANG

bool HasPreprocessor() {
    return true;
}

void Preprocess(const std::string& program) {
    static const bool isReady = glslang::InitializeProcess();
    glslang::TShader shader(EShLangCompute);
    const char* text = program.c_str();
    shader.setStrings(&text, 1);
    shader.setEnvInput(glslang::EShSourceGlsl, EShLangCompute, glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_2);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_5);
    glslang::TShader::ForbidIncluder includer;
    std::string output;
    const auto messages = static_cast<EShMessages>(EShMsgSpvRules | EShMsgVulkanRules);
    if (!isReady || !shader.preprocess(GetDefaultResources(), 460, ENoProfile, false, false, messages,
                                       &output, includer)) {
        std::fprintf(stderr, "%s\n", shader.getInfoLog());
        std::exit(1);
    }
}

#else

bool HasPreprocessor() {
    return false;
}

void Preprocess(const std::string&) {}

#endif

} // namespace norvi::benchmark
