// "norvi translate": the program that a kernel becomes in a shading language, what the parser understood of
// the kernel, and what a compiler says to it.
#pragma once

#include "norvi/command.h"
#include "norvi/translation.h"

namespace norvi {

struct TranslateOptions {
    TranslationOptions translation;
    String output; ///< empty: the standard output
    bool showPieces = false;
    bool isJson = false;
    bool check = false;
};

void AddTranslateCommand(CLI::App& app, CommandContext& context);

/// What `norvi translate` prints or writes. A program that a compiler refuses is an error whose message is
/// the compiler's, at the author's lines. Text of encoded files is not shown.
Result<String> TranslateText(const TranslateOptions& options);

} // namespace norvi
