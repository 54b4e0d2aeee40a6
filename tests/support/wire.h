#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What crosses the pipe and the section, spelled by the tests themselves: nothing here comes from src/ or parent/.

namespace kessil::test {

using Bytes = std::vector<unsigned char>;

Bytes operator+(Bytes left, const Bytes &right);
Bytes &operator+=(Bytes &left, const Bytes &right);

/// Pairs of hexadecimal digits, with blanks where they help the eye: "53 0000001A" as five bytes. Anything else throws
/// std::invalid_argument.
Bytes Hex(std::string_view digits);

/// The reverse, in pairs with blanks, for messages.
std::string Show(const Bytes &bytes);

/// The same byte `count` times; and 0, 1, ... 255, 0, 1, ...
Bytes Repeat(unsigned char byte, std::size_t count);
Bytes CountUp(std::size_t count);

/// The first `count` bytes, those behind them, and the last `count` bytes; as many of them as there are.
Bytes First(std::size_t count, const Bytes &bytes);
Bytes Behind(std::size_t count, const Bytes &bytes);
Bytes Last(std::size_t count, const Bytes &bytes);

/// The same bytes but for one bit, counted from the lowest of the first byte.
Bytes FlipBit(Bytes bytes, std::size_t bit);

/// 4 and 8 bytes, most significant first.
Bytes Be32(std::uint32_t value);
Bytes Be64(std::uint64_t value);

/// The characters alone; the characters and a zero byte.
Bytes Plain(std::string_view text);
Bytes Narrow(std::string_view text);

/// The units, least significant byte first, and a zero unit.
Bytes Wide(std::u16string_view text);

/// Type byte, length of the payload in 4 bytes, payload.
Bytes Frame(char type, const Bytes &payload);

/// Requests: log on, add to the search path, ask for the text of an error, load a library for the first and for the
/// second generation, call a function, a command of the second generation with its bare values, and the orderly stop.
Bytes LogonFrame(std::u16string_view user, std::u16string_view domain, std::u16string_view password,
                 std::uint32_t flag);
Bytes PathFrame(std::u16string_view directories);
Bytes ErrorTextFrame(std::uint32_t code, std::u16string_view file);
Bytes LoadFrame(std::u16string_view library);
Bytes LoadAltFrame(std::string_view library);
Bytes CallFrame(std::u16string_view library, std::string_view function, std::string_view signature);
Bytes CommandRequest(std::uint8_t command, const Bytes &values = {});
Bytes OrderlyStop();

/// The announcement of a section, in both directions.
Bytes ResizeFrame(std::u16string_view name, std::uint64_t size);

/// Answers. A failure of marshalling is an error with both codes -1.
Bytes SuccessFrame();
Bytes ErrorFrame(std::uint32_t return_code, std::uint32_t system_error, std::u16string_view text);
Bytes FailureFrame(std::u16string_view text);

} // namespace kessil::test
