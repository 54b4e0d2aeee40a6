#include "fuzz/recorders.h"

#include "platform/last_error.h"
#include "rows/exports.h"
#include "targets/leave_last_error.h"
#include "targets/record.h"
#include "targets/script.h"

namespace kessil::test {
namespace {

std::string answers;

std::string Units(std::size_t count)
{
    std::string digits;
    for (std::size_t at = 0; at < count; ++at)
        digits += "6500";
    return digits;
}

} // namespace

const FakeModule::Exports &Recorders()
{
    static const FakeModule::Exports exports = [] {
        FakeModule::Exports all;
        for (const Exports *family : {&CwbExports(), &DominoExports(), &EseExports(), &MapiExports()})
            all.insert(family->begin(), family->end());
        return all;
    }();
    return exports;
}

void ScriptRecorders(std::uint8_t seed, std::size_t readable)
{
    answers.clear();
    if (seed % 4 == 0)
        return;
    const std::string number = "=" + std::to_string(seed);
    for (const char *const out : {"result",  "error",  "context", "file",      "size",   "count",  "mapi",    "value",
                                  "value1",  "value2", "value3",  "value4",    "count1", "count2", "version", "system",
                                  "program", "ccsid",  "page",    "converter", "errors", "needed"})
        answers += out + number + " ";
    // The longest text fits into the room that the functions have for one.
    for (const char *const out : {"text1", "text2", "text3", "text7", "digits"})
        answers += out + ("=" + Units(seed)) + " ";
    answers += "instances=" + std::to_string(seed % 3) + " registered=" + std::to_string(seed % 3);
    answers += " list=" + (seed % 2 == 0 ? "null" : Units(seed) + "000000000000");
    answers += " count_up=" + std::to_string(readable);
}

void ScriptAdapter(std::uint8_t seed, bool listings)
{
    answers.clear();
    if (seed % 4 == 0)
        return;
    const std::string number = "=" + std::to_string(seed);
    for (const char *const out : {"result", "error", "credentials", "options", "session", "file", "cache", "disk",
                                  "aclinfo", "reader", "number", "value", "extra", "timestamp", "count", "flag"})
        answers += out + number + " ";
    answers += listings ? "items=a:1:2:3,:4:5:6 " : "listing" + number + " ";
    if (seed % 3 == 0)
        answers += "thread_log=line level" + number + " ";
    answers += "name=n";
    if (seed % 5 != 0)
        answers += " text=why";
}

} // namespace kessil::test

// What the stand-in libraries are linked with in the place of files.

void Record(const std::string & /*line*/) {}

Behaviour NextBehaviour(const std::string & /*function*/)
{
    return ParseBehaviour(kessil::test::answers);
}

void LeaveLastError(std::uint32_t code)
{
    kessil::platform::SetLastError(code);
}
