#include <norvi/host/formula.h>

namespace norvi {

namespace {

constexpr std::string_view RandomName = "rnd";

String Inject(std::string_view formula, std::string_view seedVariable) {
    String result;
    size_t copied = 0; // bytes of the formula that stand in the result
    size_t open = 0, close = 0;
    for (size_t found = formula.find(RandomName); found != String::npos;) {
        size_t position = found + RandomName.size();
        // Kept from one call to the next where still ahead, so that hostile text costs no quadratic time.
        if (open < position)
            open = formula.find('(', position);
        if (open == String::npos)
            break;
        if (close < open)
            close = formula.find(')', open);
        if (close == String::npos)
            break;
        if (close - open >= 2) {
            if (formula.substr(open, close - open).find(';') == String::npos) {
                result.append(formula, copied, close - copied).append("; ").append(seedVariable);
                copied = close;
            }
            position = close;
        }
        found = formula.find(RandomName, position);
    }
    return result.append(formula, copied);
}

} // namespace

Result<String> InjectSeed(const String& formula, const String& seedVariable) {
    return CatchOutOfMemory([&]() -> Result<String> { return Inject(formula, seedVariable); });
}

} // namespace norvi
