#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

/// Reads any text. What is accepted has to survive being written and read again, `count` being the
/// number of its records; what is refused has to be quoted.
template <class Serializer, class Count>
void fuzzSerializer(const std::string& text, const Count& count) {
  Serializer serializer;
  try {
    const auto document = serializer.deserialize(text);
    const std::string written = serializer.serialize(*document);
    const auto again = serializer.deserialize(written);
    if (count(*again) != count(*document)) {
      std::abort();
    }
  } catch (const std::runtime_error& error) {
    const std::string expected = std::string("Deserializing failed: '") + text.c_str();
    if (std::string(error.what()).compare(0, expected.size(), expected) != 0) {
      std::abort();
    }
  }
}
