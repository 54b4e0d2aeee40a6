#pragma once

#include <map>
#include <string>

namespace kessil::test {

/// The functions of a stand-in library that is linked into the program, by name.
using Exports = std::map<std::string, void *>;

const Exports &AdapterExports();
const Exports &CwbExports();
const Exports &DominoExports();
const Exports &EseExports();
const Exports &MapiExports();
const Exports &VornExports();

} // namespace kessil::test

/// One of them.
#define KESSIL_TEST_EXPORT(name) kessil::test::Exports::value_type(#name, reinterpret_cast<void *>(name))
