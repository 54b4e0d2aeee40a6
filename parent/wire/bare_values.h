#pragma once

#include "parent/wire/big_endian.h"

#include <kessil/adapter.h>

#include <algorithm>
#include <concepts>
#include <limits>
#include <string>
#include <string_view>

namespace kessil::parent {

/// The values of a call by command, which stand on the pipe without a frame around them:
///
///     command     0x66, 1 byte number of the command; the arguments follow
///     number      4 or 8 bytes, big-endian
///     text        4 bytes length, the bytes
///     block       as a text
///     log block   for each line -99, text, 4 bytes level; at the end -999
///     listing     4 bytes count; for each item text, 8 bytes value, 4 bytes number, in some listings 4 bytes extra
///
/// A bare -1 in the place of the first value is a refusal. In the place of a status, a count or a length it says that
/// the adapter's function failed, and the adapter's text follows.
constexpr std::int32_t log_line_follows = -99;
constexpr std::int32_t end_of_log = -999;
constexpr std::uint32_t failure_mark = 0xFFFFFFFF;

/// The longest text that a helper accepts as an argument, in bytes.
constexpr std::size_t longest_text_argument = 1024;

enum class ItemForm
{
    Short,
    WithExtra
};

/// Builds the request of a call by command. Its memory is kept from one request to the next.
class BareWriter
{
public:
    BareWriter &Begin(int command);
    BareWriter &U32(std::uint32_t value);
    BareWriter &U64(std::uint64_t value);
    BareWriter &Text(std::string_view text);

    /// Bytes as they are.
    BareWriter &Raw(std::span<const unsigned char> bytes);

    bool HasArguments() const;
    std::span<const unsigned char> Bytes() const { return m_bytes; }

    /// Allocates room for arguments of `size` bytes. A request that stays within it isn't moved, so that no copy of a
    /// secret stays behind in released memory.
    void Reserve(std::size_t size);

    /// Overwrites a request that held a secret, and leaves it empty.
    void Wipe();

private:
    std::vector<unsigned char> m_bytes;
};

/// Where BareReader gets its bytes.
template <class Source>
concept BareSource = requires(Source &source, std::span<unsigned char> place, const std::string &reason)
{
    /// Waits for exactly as many bytes as `place` has room for. False when the request has ended.
    {
        source.Receive(place)
        } -> std::same_as<bool>;

    /// Ends the request, since the helper sent something impossible.
    source.EndBroken(reason);
};

/// Reads the values of an answer. Each function returns false when the request has ended before its value was
/// complete, or because of this value.
template <BareSource Source>
class BareReader
{
public:
    explicit BareReader(Source &source) : m_source(source) {}

    bool Number(std::uint32_t &value);
    bool Number(std::int32_t &value);

    bool Text(std::string &text);

    /// The bytes of a text whose length has been read.
    bool Text(std::uint32_t length, std::string &text);

    /// What follows the mark of a log line.
    bool LogLine(std::uint8_t &level, std::string &text);

    /// The items of a listing whose count has been read.
    bool Items(std::uint32_t count, std::vector<AdapterItem> &items, ItemForm form);

private:
    bool Item(AdapterItem &item, ItemForm form);
    bool Broken(const std::string &reason);

    // The longest text that a helper may send.
    static constexpr std::uint32_t longest_text = 1 << 20;

    // The memory of a text grows in such pieces as its bytes arrive: its length may be wrong.
    static constexpr std::uint32_t text_piece = 4096;

    Source &m_source;
};

template <BareSource Source>
bool BareReader<Source>::Number(std::uint32_t &value)
{
    unsigned char bytes[4];
    if (!m_source.Receive(bytes))
        return false;
    value = static_cast<std::uint32_t>(FromBigEndian(bytes));
    return true;
}

template <BareSource Source>
bool BareReader<Source>::Number(std::int32_t &value)
{
    std::uint32_t number = 0;
    if (!Number(number))
        return false;
    value = static_cast<std::int32_t>(number);
    return true;
}

template <BareSource Source>
bool BareReader<Source>::Text(std::string &text)
{
    std::uint32_t length = 0;
    return Number(length) && Text(length, text);
}

template <BareSource Source>
bool BareReader<Source>::Text(std::uint32_t length, std::string &text)
{
    text.clear();
    if (length > longest_text)
        return Broken("a text of " + std::to_string(length) + " bytes");
    while (text.size() < length) {
        const std::size_t received = text.size();
        text.resize(received + std::min<std::size_t>(text_piece, length - received));
        if (!m_source.Receive({reinterpret_cast<unsigned char *>(text.data()) + received, text.size() - received}))
            return false;
    }
    return true;
}

template <BareSource Source>
bool BareReader<Source>::LogLine(std::uint8_t &level, std::string &text)
{
    std::uint32_t number = 0;
    if (!Text(text) || !Number(number))
        return false;
    if (number > 0xFF)
        return Broken("a log line of level " + std::to_string(number));
    level = static_cast<std::uint8_t>(number);
    return true;
}

template <BareSource Source>
bool BareReader<Source>::Items(std::uint32_t count, std::vector<AdapterItem> &items, ItemForm form)
{
    items.clear();
    if (count > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return Broken("a listing of " + std::to_string(count) + " items");
    AdapterItem item;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!Item(item, form))
            return false;
        items.push_back(std::move(item));
    }
    return true;
}

template <BareSource Source>
bool BareReader<Source>::Item(AdapterItem &item, ItemForm form)
{
    unsigned char numbers[16];
    const std::span<unsigned char> all(numbers);
    if (!Text(item.name) || !m_source.Receive(all.first(form == ItemForm::WithExtra ? 16 : 12)))
        return false;
    item.value = FromBigEndian(all.first(8));
    item.number = static_cast<std::int32_t>(FromBigEndian(all.subspan(8, 4)));
    if (form == ItemForm::WithExtra)
        item.extra = static_cast<std::int32_t>(FromBigEndian(all.subspan(12, 4)));
    return true;
}

template <BareSource Source>
bool BareReader<Source>::Broken(const std::string &reason)
{
    m_source.EndBroken(reason);
    return false;
}

} // namespace kessil::parent
