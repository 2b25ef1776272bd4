#include "foundation/Any.h"

#include <cxxabi.h>

#include <cstdlib>

namespace Any {

std::string printableTypeName(const std::type_info& type) {
  if (type == typeid(void)) return "void";
  if (type == typeid(bool)) return "bool";
  if (type == typeid(int)) return "int";
  if (type == typeid(double)) return "double";
  if (type == typeid(std::u16string)) return "std::u16string";
  if (type == typeid(std::string)) return "std::string";
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return status == 0 && demangled ? std::string(demangled.get()) : std::string(type.name());
}

}  // namespace Any
