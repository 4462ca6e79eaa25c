// The macros of the kernel language, which are rewritten in place, line by line.
#pragma once

#include <norvi/host/result.h>

#include "key_finder.h"
#include "shader_pieces.h"

namespace norvi {

/// What the rewriting of one parse depends on.
struct MacroContext {
    explicit MacroContext(ShaderPieces& pieces) : shader(pieces) {}

    ShaderPieces& shader;
    String templateArgument;                              ///< replaces `TYPE`; empty leaves it alone
    Int32 multisampling = -1;                             ///< number of samples; negative: no matter
    LineOrigin origin;                                    ///< of the line at hand
    size_t rewrittenBytes = 0;                            ///< length of all lines that came out of macros
    std::unordered_map<String, String> formulaStatements; ///< of the formulas that were met, by name
};

struct MacroEntry;

/// Rewrites `line`, where the entry's key stands at `position`.
using MacroHandler = Result<void> (*)(const MacroEntry& entry, String& line, size_t position);

struct MacroEntry {
    std::string_view key;
    MacroHandler handler;
    String value;          ///< what the handler puts in the key's place, if it does
    MacroContext* context; ///< of the parse
};

/// The keys are looked for in order, anywhere in a line: also inside words and comments.
class MacroList {
  public:
    explicit MacroList(BaseArray<MacroEntry> entries);

    const BaseArray<MacroEntry>& GetEntries() const { return entries_; }
    /// Whether a key stands in `line`. Far cheaper than to apply the list, which changes no other line.
    bool Concerns(std::string_view line) const { return finder_.FindsAny(line); }
    /// Rewrites each key until it is gone. What would never end is an illegal-state error.
    Result<void> Apply(String& line) const;

  private:
    BaseArray<MacroEntry> entries_;
    KeyFinder finder_;
};

struct MacroLists {
    MacroList signature; ///< MacroListSignature, for the headers of inline functions
    MacroList global;    ///< MacroListGlobal, for parameters
    MacroList text;      ///< MacroListGlobal, then MacroListBody, for function bodies and global lines

    /// @param context must outlive the lists.
    explicit MacroLists(MacroContext& context);
};

} // namespace norvi
