#pragma once

#include <kessil/adapter_interface.h>

namespace kessil {

class CIPCCommunication;

/// Writes a whole listing as bare values: the count, behind -999 if `with_marker`; then for each item its name, its
/// wide value, its number and, if `with_extra`, its second number. False as soon as a write fails.
[[nodiscard]] bool writeItemList(CIPCCommunication &channel, const AdapterListing &list, bool with_extra,
                                 bool with_marker);

} // namespace kessil
