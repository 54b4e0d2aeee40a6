#pragma once

#include "platform/text.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The bytes of a conversation, spelled by hand.
namespace kessil::test {

using Bytes = std::string;

/// Pairs of hexadecimal digits, with blanks where they help the eye: Hex("53 00000000").
Bytes Hex(std::string_view digits);

/// The same the other way round, in pairs with blanks, for messages.
std::string Show(const Bytes &bytes);

/// Numbers, most significant byte first.
Bytes Be32(std::uint32_t value);
Bytes Be64(std::uint64_t value);

/// Text with its zero byte, and text as 16-bit units, low byte first, with its zero unit.
Bytes Narrow(std::string_view text);
Bytes Wide(std::u16string_view text);

/// Type byte, length of the payload, payload.
Bytes Frame(char type, const Bytes &payload);

/// The frames that tests send or expect most.
Bytes LoadFrame(const WideString &library);
Bytes CallFrame(const WideString &library, std::string_view function, std::string_view signature);
Bytes SectionFrame(const WideString &name, std::uint64_t size);
Bytes ErrorFrame(std::uint32_t return_code, std::uint32_t system_error, std::u16string_view text);

/// An empty success frame, and the two bytes that stop the helper in order.
inline const Bytes success = Hex("53 00000000");
inline const Bytes orderly_stop = Hex("66 01");

/// `count` bytes 0, 1, ... 255, 0, 1, ...
Bytes CountUp(std::size_t count);

} // namespace kessil::test
