#pragma once

#include <stdexcept>
#include <string>

/// The text of what the call throws.
template <class Call>
std::string errorOf(const Call& call) {
  try {
    call();
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}
