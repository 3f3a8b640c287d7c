#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quovix::detail {

/// The full name of the type, as the compiler prints it in a function signature:
/// "... [with T = NAME; ...]" from g++, "... [T = NAME]" from clang.
template <class T>
std::string_view compilerTypeName() {
  const std::string_view signature = __PRETTY_FUNCTION__;
  constexpr std::string_view marker = "T = ";
  const std::size_t begin = signature.find(marker) + marker.size();
  return signature.substr(begin, signature.find_first_of(";]", begin) - begin);
}

/// The full name of the type, the same with every compiler.
template <class T>
struct TypeName {
  static std::string get() { return std::string(compilerTypeName<T>()); }
};

/// "NAME<A, B>", with a space between two closing brackets.
inline std::string templateName(const std::string& name, const std::string& arguments) {
  return name + "<" + arguments + (arguments.back() == '>' ? " >" : ">");
}

/// Spelled out because compilers and standard libraries disagree on it.
template <class T>
struct TypeName<std::default_delete<T>> {
  static std::string get() { return templateName("std::default_delete", TypeName<T>::get()); }
};

}  // namespace quovix::detail
