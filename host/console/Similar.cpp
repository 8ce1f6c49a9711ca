#include "host/console/Similar.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace host
{

namespace
{

constexpr size_t kLongestName = 64; ///< longer texts are not misspelt names, and comparing them would take long
constexpr size_t kMostChanges = 2;  ///< half of the letters for shorter names

/// The number of letters to insert, remove or replace to turn `a` into `b`.
size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const char letter : a)
    {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j)
        {
            const size_t change = diagonal + (letter == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string SimilarNames(std::string_view name, const std::vector<std::string>& known)
{
    const size_t mostChanges = std::min(kMostChanges, name.size() / 2);
    std::string similar;
    for (const std::string& candidate : known)
    {
        const bool isSimilar = name.size() <= kLongestName && (Distance(name, candidate) <= mostChanges ||
                                                               (!name.empty() && candidate.starts_with(name)));
        similar += isSimilar ? (similar.empty() ? "" : ", ") + candidate : "";
    }
    return similar;
}

} // namespace host
