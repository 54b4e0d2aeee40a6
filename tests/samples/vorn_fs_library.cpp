#include "vorn_fs_library.h"

#include "platform/module.h"
#include "support/set_variable.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

namespace {

std::filesystem::path FreshDirectory()
{
    std::random_device random;
    const auto name = "vorn_fs_test_" + std::to_string(random()) + std::to_string(random());
    std::filesystem::path path = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(path);
    return path;
}

template <typename Function>
void Find(void *library, const char *name, Function &function)
{
    function = reinterpret_cast<Function>(kessil::platform::FindExport(library, name));
    ASSERT_NE(function, nullptr) << name;
}

std::uint64_t Number(const unsigned char *bytes, int count)
{
    std::uint64_t value = 0;
    for (int at = count - 1; at >= 0; --at)
        value = (value << 8) | bytes[at];
    return value;
}

} // namespace

VornFs::VornFs()
    : vorn(), base(FreshDirectory()), root(base / "root"), outside(base / "outside"),
      m_library(kessil::platform::LoadModule(kessil::platform::FromUtf8(KESSIL_TEST_VORN_FS)))
{
    std::filesystem::create_directory(root);
    std::filesystem::create_directory(outside);
    kessil::test::SetVariable("VORN_FS_ROOT", root.string());
    Find(m_library, "GetLibApiVersion", vorn.GetLibApiVersion);
    Find(m_library, "GetBackupType", vorn.GetBackupType);
    Find(m_library, "VornCreateSession", vorn.CreateSession);
    Find(m_library, "VornCloseSession", vorn.CloseSession);
    Find(m_library, "VornCreateDir", vorn.CreateDir);
    Find(m_library, "VornOpenDir", vorn.OpenDir);
    Find(m_library, "VornGetNextDirItem", vorn.GetNextDirItem);
    Find(m_library, "VornCloseDir", vorn.CloseDir);
    Find(m_library, "VornCreateFile", vorn.CreateFile);
    Find(m_library, "VornOpenFile", vorn.OpenFile);
    Find(m_library, "VornReadFile", vorn.ReadFile);
    Find(m_library, "VornWriteFile", vorn.WriteFile);
    Find(m_library, "VornRestoreFile", vorn.RestoreFile);
    Find(m_library, "VornCloseFile", vorn.CloseFile);
    Find(m_library, "VornGetErrorText", vorn.GetErrorText);
    session = OpenSession();
}

VornFs::~VornFs()
{
    if (vorn.CloseSession)
        vorn.CloseSession(session);
    kessil::platform::FreeModule(m_library);
    std::error_code ignored;
    std::filesystem::remove_all(base, ignored);
}

std::uint64_t VornFs::OpenSession()
{
    std::uint64_t opened = 0;
    vorn.CreateSession(&opened);
    EXPECT_NE(opened, 0u);
    return opened;
}

void VornFs::WriteBelow(const std::filesystem::path &path, const std::string &content)
{
    std::filesystem::create_directories((root / path).parent_path());
    std::ofstream(root / path, std::ios::binary) << content;
}

std::string VornFs::ReadBelow(const std::filesystem::path &path)
{
    std::ifstream file(root / path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<ListedItem> VornFs::ListAll(const std::string &path)
{
    std::uint64_t dir = 0;
    EXPECT_EQ(vorn.CreateDir(session, &dir), 0u);
    EXPECT_EQ(vorn.OpenDir(session, dir, path.c_str()), 0u) << path;
    std::vector<ListedItem> items;
    std::array<unsigned char, 800> item;
    std::uint32_t code = 0;
    for (item.fill(0xAA); (code = vorn.GetNextDirItem(session, dir, item.data())) == 0; item.fill(0xAA)) {
        const auto length = static_cast<std::size_t>(Number(&item[4], 4));
        EXPECT_EQ(Number(&item[28], 4), 0u);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(&item[32])).size(), length);
        items.push_back({static_cast<std::uint32_t>(Number(&item[0], 4)),
                         {reinterpret_cast<char *>(&item[32]), length},
                         Number(&item[8], 8),
                         static_cast<std::int64_t>(Number(&item[16], 8)),
                         static_cast<std::uint32_t>(Number(&item[24], 4))});
    }
    EXPECT_EQ(code, 1u);
    EXPECT_EQ(vorn.CloseDir(session, dir), 0u);
    return items;
}

std::vector<std::string> VornFs::Names(const std::string &path)
{
    std::vector<std::string> names;
    for (const ListedItem &item : ListAll(path))
        names.push_back(item.name);
    return names;
}

std::uint64_t VornFs::Open(const std::string &path, std::uint32_t mode, std::uint32_t &code)
{
    std::uint64_t file = 0;
    EXPECT_EQ(vorn.CreateFile(session, &file), 0u);
    code = vorn.OpenFile(session, file, path.c_str(), mode);
    return file;
}

std::uint32_t VornFs::OpenCode(const std::string &path, std::uint32_t mode)
{
    std::uint32_t code = 0;
    vorn.CloseFile(session, Open(path, mode, code));
    return code;
}

std::string VornFs::ReadAll(const std::string &path, std::uint32_t block)
{
    std::uint32_t code = 0;
    const std::uint64_t file = Open(path, 1, code);
    EXPECT_EQ(code, 0u) << path;
    std::string content;
    std::string bytes(block, '\0');
    std::uint32_t count = 0;
    while (vorn.ReadFile(session, file, bytes.data(), block, &count) == 0 && count > 0)
        content.append(bytes, 0, count);
    EXPECT_EQ(vorn.CloseFile(session, file), 0u);
    return content;
}

void VornFs::Restore(const std::string &path, const std::string &content)
{
    std::uint32_t code = 0;
    std::uint32_t count = 0;
    const std::uint64_t file = Open(path, 2, code);
    ASSERT_EQ(code, 0u) << path;
    const auto size = static_cast<std::uint32_t>(content.size());
    EXPECT_EQ(vorn.WriteFile(session, file, content.data(), size, &count), 0u);
    EXPECT_EQ(count, size);
    EXPECT_EQ(vorn.RestoreFile(session, file), 0u);
    EXPECT_EQ(vorn.CloseFile(session, file), 0u);
}
