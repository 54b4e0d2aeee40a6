#pragma once

#include "rows/adapter_row.h"

namespace kessil::test {

namespace machines {

/// Credentials 0x701.
extern const Step credentials;

/// The disk 0x601.
extern const Step disk;

/// The pairs of hexadecimal digits of that many zero bytes.
std::string Zeros(std::size_t bytes);

} // namespace machines

/// Machines and disks, with the arguments in the section.
const std::vector<AdapterRow> &MachinesRows();

/// The same by command, with bare values on the pipe. All of them call the adapter, whatever could be read.
const std::vector<CommandRow> &MachinesCommands();

} // namespace kessil::test
