#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

/// Reads any text. What is accepted has to mean the same after it was written and read again, and
/// with white space before it; what is refused has to be quoted. `meaning` is a document's records
/// in some order of theirs.
template <class Serializer, class Meaning>
void fuzzSerializer(const std::string& text, const Meaning& meaning) {
  Serializer serializer;
  try {
    const auto expected = meaning(*serializer.deserialize(text));
    const std::string written = serializer.serialize(*serializer.deserialize(text));
    if (meaning(*serializer.deserialize(written)) != expected ||
        (!text.empty() && meaning(*serializer.deserialize(" " + text)) != expected)) {
      std::abort();
    }
  } catch (const std::runtime_error& error) {
    const std::string expected = std::string("Deserializing failed: '") + text.c_str();
    if (std::string(error.what()).compare(0, expected.size(), expected) != 0) {
      std::abort();
    }
  }
}
