#include <kessil/parent.h>

#include <cstdio>
#include <filesystem>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: first_call KESSIL LIBRARY\n");
        return 2;
    }
    kessil::parent::Options options;
    options.program = argv[1];
    kessil::parent::Helper helper(options);
    const kessil::WideString library = std::filesystem::absolute(argv[2]).u16string();

    kessil::parent::Result result = helper.Start();
    if (result)
        result = helper.Load(library);

    // No arguments in, one number out.
    std::uint32_t type = 0;
    helper.Begin();
    if (result)
        result = helper.Call(library, "GetBackupType", "SIGNATURE_GetBackupType", {});
    if (result)
        result = helper.Results().U32(type).Complete();

    // In: three numbers, room for a text, the room's size. Out: the same five, the room filled by the library.
    constexpr std::uint32_t room = 256;
    std::uint64_t session = 0;
    std::uint64_t object = 0;
    std::uint32_t code = 5;
    std::uint32_t size = 0;
    std::span<const std::byte> text;
    const kessil::parent::TimeLimit limit{std::chrono::seconds(5), std::chrono::seconds(60)};
    helper.Begin().U64(session).U64(object).U32(code).Room(room).U32(room);
    if (result)
        result = helper.Call(library, "VornGetErrorText", "SIGNATURE_VornGetErrorText", limit);
    if (result)
        result = helper.Results().U64(session).U64(object).U32(code).Buffer(text).U32(size).Complete();
    if (result) {
        const std::string shown(reinterpret_cast<const char *>(text.data()), text.size());
        std::printf("backup type %u, code %u means: %s\n", type, code, shown.c_str());
        result = helper.Stop();
    }
    if (!result)
        std::fprintf(stderr, "%s\n", result.message.c_str());
    return result ? 0 : 1;
}
