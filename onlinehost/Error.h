#pragma once

#include <stdexcept>

namespace onlinehost
{

/// What went wrong, in words for the person at the program.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace onlinehost
