#include <norvi/host/near_name.h>

#include <algorithm>

namespace norvi {

namespace {

// Longer names are hardly typed by hand; without a limit, hostile text could make the search slow.
constexpr size_t LongestCorrected = 64;
constexpr size_t MostEdits = 3;

size_t EditLimit(size_t length) {
    if (length < 2 || length > LongestCorrected)
        return 0;
    return std::clamp<size_t>(length / 3, 1, MostEdits);
}

char FoldCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualFolded(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return FoldCase(x) == FoldCase(y); });
}

// Edit distance with swaps of neighbours (the "optimal string alignment" distance), row by row. `a` and `b`
// are at most LongestCorrected + MostEdits long.
size_t EditDistance(std::string_view a, std::string_view b) {
    constexpr size_t Width = LongestCorrected + MostEdits + 1;
    size_t rows[3][Width];
    for (size_t j = 0; j <= b.size(); ++j)
        rows[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t* row = rows[i % 3];
        const size_t* above = rows[(i + 2) % 3];
        const size_t* twoAbove = rows[(i + 1) % 3];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const char x = FoldCase(a[i - 1]), y = FoldCase(b[j - 1]);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (x != y)});
            if (i > 1 && j > 1 && x == FoldCase(b[j - 2]) && y == FoldCase(a[i - 2]))
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return rows[a.size() % 3][b.size()];
}

} // namespace

String SuggestNearName(std::string_view name, const std::vector<std::string_view>& candidates) {
    const size_t limit = EditLimit(name.size());
    size_t least = limit + 1;
    std::string_view nearest;
    for (const std::string_view candidate : candidates) {
        const size_t shorter = std::min(name.size(), candidate.size());
        const size_t longer = std::max(name.size(), candidate.size());
        size_t distance = limit + 1;
        if (EqualFolded(name, candidate))
            distance = 0;
        else if (limit > 0 && longer - shorter <= limit)
            distance = EditDistance(name, candidate);
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return String(nearest);
}

} // namespace norvi
