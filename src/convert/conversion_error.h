#pragma once

#include <stdexcept>

namespace convert {

// The conversion cannot be done or had to stop; the text says what to do. Nothing was left under the new name.
class ConversionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The operator stopped it.
class ConversionStopped : public ConversionError {
 public:
  using ConversionError::ConversionError;
};

}  // namespace convert
