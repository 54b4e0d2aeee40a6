#pragma once

#include "marshal/handler_call.h"
#include "marshal/row_words.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

// A row whose lists follow from the prototype of its target is written as that prototype, in the words of row_words.h:
//
//   Row<U32(U64 session, U64 file, BUF block, U32 size, Out<U32> count)>::Run(channel, __func__, function,
//                                                                             OutList::EchoAndResults);
//
// The in-list is what the words read, in their order. The results are what the target fills, in the order of the words,
// and what it returns. A row that departs from this is written out with HandlerCall and says why.

namespace kessil {

/// What lies in the section after the call.
enum class OutList
{
    Results,
    EchoAndResults ///< the in-list as well, in front, so that a BUF comes to lie where it was read
};

/// The parameters of a row, each by its index: a tuple that compiles faster than the standard library's.
template <std::size_t index, class Parameter>
struct Slot
{
    Parameter parameter;
};

template <class Indices, class... Parameters>
struct Slots;

template <std::size_t... I, class... Parameters>
struct Slots<std::index_sequence<I...>, Parameters...> : Slot<I, Parameters>...
{};

template <std::size_t index, class Parameter>
Parameter &At(Slot<index, Parameter> &slot)
{
    return slot.parameter;
}

template <class Prototype>
class Row;

template <class Returned, class... Words>
class Row<Returned(Words...)>
{
public:
    /// The body of a handler; see HandlerCall for `handler` and `texts`. Not inline, or each handler would have a copy
    /// of the code that rows with the same prototype share.
    [[gnu::noinline]] static void Run(CIPCCommunication &channel, const char *handler, void *function, OutList out_list,
                                      const FailureTexts &texts = usual_texts)
    {
        Serve(HandlerCall(channel, handler, texts), function, out_list, std::index_sequence_for<Words...>());
    }

private:
    template <class Word>
    using Parameter = std::conditional_t<std::is_base_of_v<CDataElement, Word>, Plain<Word>, Word>;
    using Parameters = Slots<std::index_sequence_for<Words...>, Parameter<Words>...>;

    static constexpr bool with_last_error = std::is_same_v<Returned, WithLastError<U32>>;
    static constexpr bool with_result = with_last_error || std::is_same_v<Returned, U32>;
    static_assert(with_result || std::is_same_v<Returned, Ignored<U32>>);

    template <std::size_t... I>
    static void Serve(HandlerCall call, void *function, OutList out_list, std::index_sequence<I...>)
    {
        [[maybe_unused]] Parameters parameters;
        U32 result, last_error;
        std::array<CDataElement *, sizeof...(I) + 2> list;
        CDataElement **end = list.data();
        (Append<Place::InList>(At<I>(parameters), end), ...);
        CDataElement **const results = end;
        (Append<Place::Results>(At<I>(parameters), end), ...);
        if constexpr (with_result)
            *end++ = &result;
        if constexpr (with_last_error)
            *end++ = &last_error;

        if constexpr (((Parameter<Words>::place == Place::InList) || ...)) {
            if (!call.ReadList({list.data(), results}))
                return;
        }
        const auto target = AsTarget<std::uint32_t(decltype(Argument<I>(parameters))...)>(function);
        result.value = target(Argument<I>(parameters)...);
        if constexpr (with_last_error)
            last_error.value = LastErrorAfter(result.value);
        (Finish(At<I>(parameters)), ...);
        call.ReplyList({out_list == OutList::EchoAndResults ? list.data() : results, end});
    }

    template <Place place, class Parameter>
    static void Append(Parameter &parameter, CDataElement **&end)
    {
        if constexpr (Parameter::place == place)
            *end++ = &parameter.element;
    }

    template <std::size_t I>
    static auto Argument(Parameters &parameters)
    {
        if constexpr (std::is_same_v<decltype(At<I>(parameters)), Length &>)
            return At<I - 1>(parameters).element.Size();
        else
            return At<I>(parameters).Argument();
    }

    template <class Parameter>
    static void Finish(Parameter &parameter)
    {
        if constexpr (requires { parameter.Finish(); })
            parameter.Finish();
    }
};

} // namespace kessil
