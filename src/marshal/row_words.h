#pragma once

#include "marshal/elements.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// The words of a row (row.h). Each stands for one parameter of the target and says what the target gets for it, and
// whether it stands in the in-list or among the results. The name of an element stands in the in-list: the target gets
// the element's Argument.

namespace kessil {

enum class Place
{
    InList,
    Results,
    Nowhere
};

/// What the name of an element stands for.
template <class Element>
struct Plain
{
    static constexpr Place place = Place::InList;
    auto Argument() { return element.Argument(); }
    Element element;
};

/// A STR or WSTR of the in-list. The target gets null for the empty string.
template <class String>
struct OrNull
{
    static constexpr Place place = Place::InList;
    auto Argument() { return element.text.empty() ? nullptr : element.Text(); }
    String element;
};

/// A number of the in-list. The target gets its address, and what it leaves there is what the echo holds.
template <class Number>
struct InOut
{
    static constexpr Place place = Place::InList;
    auto Argument() { return &element.value; }
    Number element;
};

/// A number among the results. The target gets its address; it starts at 0.
template <class Number>
struct Out
{
    static constexpr Place place = Place::Results;
    auto Argument() { return &element.value; }
    Number element;
};

/// A WSTR among the results. The target gets the address of that many units, all zero at first, and has to know how
/// many they are. The text ends in front of the first zero unit.
template <std::size_t units>
struct OutText
{
    static constexpr Place place = Place::Results;
    auto Argument() { return room.data(); }
    void Finish()
    {
        const std::u16string_view written(room.data(), units);
        element.text = written.substr(0, written.find(u'\0'));
    }
    std::array<char16_t, units> room = {};
    WSTR element;
};

/// The length, 32 bits, of the BUF or IN that is the word before it.
struct Length
{
    static constexpr Place place = Place::Nowhere;
};

/// A number, 32 bits, that is the same in every call.
template <std::uint32_t number>
struct Const
{
    static constexpr Place place = Place::Nowhere;
    auto Argument() { return number; }
};

// What stands in front of the parameters says what the target returns. U32 is the last of the results.

/// A number that is not among the results.
template <class Number>
struct Ignored;

/// A number among the results, with the last error behind it (LastErrorAfter).
template <class Number>
struct WithLastError;

} // namespace kessil
