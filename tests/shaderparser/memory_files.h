// Source files that lie in memory.
#pragma once

#include <atomic>
#include <map>

#include "shaderparser/shaderparser.h"

namespace norvi {

class MemoryFiles final : public SourceFiles {
  public:
    MemoryFiles() = default;
    MemoryFiles(std::initializer_list<std::pair<const String, String>> files) : texts(files) {}

    Bool IsFile(const Url& url) override { return texts.contains(url.ToString()); }
    Result<String> Read(const Url& url) override {
        ++readCount;
        if (const auto found = texts.find(url.ToString()); found != texts.end())
            return found->second;
        return NotFoundError("there is no file " + url.ToString());
    }

    std::map<String, String> texts;
    std::atomic<int> readCount = 0;
};

/// Files with a cache of their own.
struct MemorySources {
    MemorySources(std::initializer_list<std::pair<const String, String>> texts) : files(texts) {}

    SourceAccess Get() { return {files, cache}; }

    MemoryFiles files;
    IncludeTextCache cache;
};

inline DataDictionary ParseOptions(const String& templateArgument, Int32 multisampling = -1) {
    DataDictionary options;
    options.Set(Id(shaderparseroption::TemplateArgument), templateArgument);
    if (multisampling >= 0)
        options.Set(Id(shaderparseroption::Multisampling), multisampling);
    return options;
}

} // namespace norvi
