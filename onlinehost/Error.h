#pragma once

#include <stdexcept>

namespace onlinehost
{

/// What every operation of the kit throws. `what` is a complete message for the user of the program, in one line.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace onlinehost
