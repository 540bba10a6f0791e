#pragma once

#include <stdexcept>

namespace tnconvert {

/// Ends the conversion of a file. what() is a sentence for the user.
class ConversionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace tnconvert
