#include "fuzz/fuzzed_commands.h"
#include "fuzz/fuzzed_rows.h"
#include "support/wire.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Writes the fuzz targets' first inputs: what parents send in the course of a backup and of a restore, each in the form
// that its target takes apart. Argument: the directory, in which each target has its own.

namespace kessil::test {
namespace {

class Corpus
{
public:
    Corpus(const std::filesystem::path &root, const std::string &target) : m_directory(root / target)
    {
        std::filesystem::create_directories(m_directory);
    }

    void Add(const std::string &name, const Bytes &bytes) const
    {
        std::ofstream file(m_directory / name, std::ios::binary);
        file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

private:
    std::filesystem::path m_directory;
};

Bytes Call(const std::string &function)
{
    return CallFrame(u"vorn.dll", function, "SIGNATURE_" + function);
}

const Bytes load = LoadFrame(u"vorn.dll");
const Bytes announce = ResizeFrame(u"s0", 64);
const Bytes stop = Hex("66 01");

struct Conversation
{
    std::string name;
    Bytes stream;
};

std::vector<Conversation> Conversations()
{
    const Bytes session = load + announce + Call("GetLibApiVersion") + Call("VornCreateSession");
    const Bytes listing = Call("VornCreateDir") + Call("VornOpenDir") + Call("VornGetNextDirItem") +
                          Call("VornGetNextDirItem") + Call("VornCloseDir");
    const Bytes reading = Call("VornCreateFile") + Call("VornOpenFile") + Call("VornReadFile") + Call("VornReadFile") +
                          Call("VornCloseFile");
    const Bytes writing = Call("VornCreateFile") + Call("VornOpenFile") + Call("VornWriteFile") +
                          Call("VornRestoreFile") + Call("VornCloseFile");
    return {
        {"first_call", load + Call("GetBackupType") + SuccessFrame() + stop},
        {"listing", session + listing + Call("VornCloseSession") + stop},
        {"backup", session + reading + Call("VornCloseSession") + stop},
        {"restore", session + writing + Call("VornCloseSession") + stop},
        {"error_text", session + Call("VornGetErrorText") + stop},
        {"growth", load + ResizeFrame(u"s1", 8) + Call("VornCreateDir") + SuccessFrame() + stop},
        {"refused_growth", load + Call("GetBackupType") + FailureFrame(u"no room") + stop},
        {"own_section_in_a_call", load + Call("GetBackupType") + announce + SuccessFrame() + stop},
        {"two_sections", announce + ResizeFrame(u"s1", 16) + load + Call("VornCloseSession") + stop},
        {"unknown_library", LoadFrame(u"none.dll") + Call("GetBackupType") + stop},
        {"unknown_signature", load + CallFrame(u"", "GetBackupType", "SIG_HR_ESE_BACKUP_END") + stop},
        {"unknown_type", Frame('Z', Hex("01 02"))},
        {"services", Frame('A', Wide(u"ada") + Wide(u"corp") + Wide(u"secret") + Wide(u"") + Be32(1)) +
                         PathFrame(u"C:\\lib") + ErrorTextFrame(5, u"messages.dll") + load + Call("GetBackupType") +
                         stop},
        {"commands", Hex("66 02 66 3F 66 01")},
        {"second_generation", announce + LoadAltFrame("vorn.dll") + Hex("66 03 66 04 66 11") + stop},
        {"bare_values", LoadAltFrame("vorn.dll") + Hex("66 02") + Be32(7) + Be64(7) + Be32(2) + Plain("ab") + Be32(3) +
                            Plain("abc") + Hex("66 02") + Be32(7) + Be64(7) + Be32(1025) + stop},
        {"parent_gone", load + Call("GetBackupType")},
    };
}

// Sections as parents lay them out for the data-source calls, in the order of FuzzedRows().
std::vector<Conversation> Sections()
{
    const Bytes session = Be64(0x0000000100000001);
    const Bytes object = Be64(0x0000000200000002);
    const Bytes two = session + object;
    const Bytes block = Be32(16) + Repeat(0, 4) + Repeat('d', 16);
    return {
        {"VornCreateSession", Repeat(0, 64)},
        {"VornCloseSession", session},
        {"VornCreateDir", session + Repeat(0, 8)},
        {"VornOpenDir", two + Narrow("home/user")},
        {"VornGetNextDirItem", two + block + Repeat(0, 16)},
        {"VornCloseDir", two},
        {"VornCreateFile", session + Repeat(0, 8)},
        {"VornOpenFile", two + Narrow("home/user/file") + Be32(1)},
        {"VornReadFile", two + block + Be32(16) + Repeat(0, 12)},
        {"VornWriteFile", two + block + Be32(16)},
        {"VornRestoreFile", two},
        {"VornCloseFile", two},
        {"VornGetErrorText", two + Be32(5) + Be32(16) + Repeat(0, 16) + Be32(16) + Repeat(0, 16)},
        {"GetLibApiVersion", Repeat(0, 4)},
        {"GetBackupType", Repeat(0, 4)},
    };
}

void WriteStreams(const std::filesystem::path &root)
{
    const Corpus frames(root, "frames");
    const Corpus loop(root, "request_loop");
    for (const Conversation &conversation : Conversations()) {
        frames.Add(conversation.name + "_plain", Bytes{0, 0, 1} + conversation.stream);
        frames.Add(conversation.name + "_loop", Bytes{1, 3, 0} + conversation.stream);
        loop.Add(conversation.name, Bytes{2, 0, 0} + conversation.stream);
        loop.Add(conversation.name + "_dribbled", Bytes{9, 1, 1} + conversation.stream);
    }
}

void WriteRecords(const std::filesystem::path &root)
{
    const Corpus records(root, "records");
    records.Add("call", Bytes{0} + Wide(u"vorn.dll") + Narrow("VornReadFile") + Narrow("SIGNATURE_VornReadFile"));
    records.Add("error", Bytes{1} + Be32(0) + Be32(126) + Wide(u"The specified module could not be found.\r\n"));
    records.Add("resize", Bytes{2} + Wide(u"section0") + Be64(65536));
    records.Add("auth", Bytes{3} + Wide(u"ada") + Wide(u"corp") + Wide(u"secret") + Wide(u"") + Be32(1));
    records.Add("message", Bytes{4} + Be32(1234) + Wide(u"messages.dll"));
    records.Add("library", Bytes{5} + Wide(u"C:\\dir\\vorn.dll"));
    records.Add("function", Bytes{5} + Narrow("VornCreateSession"));
}

void WriteElements(const std::filesystem::path &root)
{
    const Corpus elements(root, "elements");
    // Laid out for an address that is a multiple of 8; the database with the padding that its list needs.
    const Bytes guid = Be32(16) + Repeat('g', 16);
    const auto database = [&guid](std::size_t padding) {
        return Wide(u"db") + Be32(4) + Repeat(0, padding) + Repeat(0, 4) + guid + Be32(1) + Be32(2);
    };
    const std::vector<Conversation> values = {
        {"u8", Hex("FE")},
        {"u16", Hex("01 02")},
        {"u32", Be32(0x01020304)},
        {"u64", Be64(0x0102030405060708)},
        {"str", Narrow("home/user/file")},
        {"wstr", Wide(u"home/user/file")},
        {"buf", Be32(16) + Repeat(0, 4) + Repeat('d', 16)},
        {"in", Be32(16) + Repeat(0, 4) + Repeat('d', 16)},
        {"guid", Be32(16) + Repeat(0, 4) + Repeat('g', 16)},
        {"icon", Be32(3) + Repeat(0, 4) + Plain("icn")},
        {"list", Be32(10) + Repeat(0, 4) + Wide(u"log") + Wide(u"")},
        {"database", database(6)},
        {"instances", Be32(1) + Be64(7) + Wide(u"ins") + Be32(3) + Be32(1) + database(2) + Be32(0)},
        {"registered", Be32(1) + Wide(u"name") + Wide(u"note") + Be32(1) + Be32(0) + Repeat(0, 4)},
    };
    for (std::size_t kind = 0; kind < values.size(); ++kind) {
        for (unsigned char alignment = 0; alignment < 8; alignment = static_cast<unsigned char>(alignment + 3)) {
            elements.Add(values[kind].name + "_" + std::to_string(alignment),
                         Bytes{static_cast<unsigned char>(kind), alignment} + values[kind].stream + Repeat(0, 8));
        }
    }
}

void WriteHandlers(const std::filesystem::path &root)
{
    const Corpus handlers(root, "handler");
    const auto add = [&handlers](const std::string &name, unsigned char index, const Bytes &section) {
        handlers.Add(name, Bytes{index, 2, 5} + section);
        handlers.Add(name + "_refused", Bytes{index, 9, 0} + section);
    };
    unsigned char index = 0;
    for (const Conversation &section : Sections())
        add(section.name, index++, section.stream);

    std::size_t number = 0;
    for (const Row &row : FamilyRows()) {
        const std::vector<FuzzedRow> rows = FuzzedRows();
        const auto found = std::find_if(rows.begin(), rows.end(),
                                        [&row](const FuzzedRow &other) { return other.signature == row.signature; });
        Bytes section;
        for (const std::string &element : row.in)
            section = section + Hex(element);
        add(row.function + "_" + std::to_string(number++), static_cast<unsigned char>(found - rows.begin()), section);
    }
}

// One call of the adapter target, whose adapter answers something.
Bytes Asked(const std::string &signature, bool in_section, const Bytes &arguments)
{
    const std::size_t place = PlaceOf(FuzzedCommands(), signature, in_section);
    if (place == FuzzedCommands().size() || arguments.size() > 255)
        return {};
    return Bytes{static_cast<unsigned char>(place), 9, static_cast<unsigned char>(arguments.size())} + arguments;
}

Bytes Joined(const std::vector<std::string> &elements)
{
    Bytes bytes;
    for (const std::string &element : elements)
        bytes = bytes + Hex(element);
    return bytes;
}

Bytes Taken(const std::vector<Step> &steps)
{
    Bytes bytes = {0};
    for (const Step &step : steps)
        bytes = bytes + Asked(step.signature, true, Joined(step.in));
    return bytes;
}

void WriteAdapterCalls(const std::filesystem::path &root)
{
    const Corpus calls(root, "adapter");
    std::size_t number = 0;
    for (const AdapterRow &row : AllAdapterRows())
        calls.Add(row.function + "_" + std::to_string(number++),
                  Taken(row.before) + Asked(row.signature, true, Joined(row.in)));
    for (const CommandRow &row : AllCommandRows()) {
        Bytes values;
        for (const Value &value : row.in)
            values = values + Hex(value.bytes);
        calls.Add(row.function + "_" + std::to_string(number++),
                  Taken(row.before) + Asked(row.signature, false, values));
    }
}

} // namespace
} // namespace kessil::test

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: make_corpus DIRECTORY\n", stderr);
        return 2;
    }
    kessil::test::WriteStreams(argv[1]);
    kessil::test::WriteRecords(argv[1]);
    kessil::test::WriteElements(argv[1]);
    kessil::test::WriteHandlers(argv[1]);
    kessil::test::WriteAdapterCalls(argv[1]);
    return 0;
}
