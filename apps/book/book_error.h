#pragma once

#include <stdexcept>

namespace brivok {

/// What ends a command of the book tool: a text for the user, without the program's name.
class BookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace brivok
