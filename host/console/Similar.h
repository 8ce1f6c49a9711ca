#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// The known names that a person who typed `name` may have meant: those that differ in at most two letters, and those
/// that begin with `name`. Separated by ", ", in the order of `known`; empty when there is no such name.
std::string SimilarNames(std::string_view name, const std::vector<std::string>& known);

} // namespace host
