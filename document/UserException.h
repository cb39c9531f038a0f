// Abandons a command after its message has been shown. The command
// dispatcher catches it silently and keeps the state reached so far.
#pragma once

#include <exception>

namespace sonmetra {

class UserException : public std::exception {
public:
    const char* what() const noexcept override { return "command abandoned"; }
};

}  // namespace sonmetra
