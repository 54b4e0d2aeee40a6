#include "native.h"

#include <gtest/gtest.h>

#include <vector>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace kessil::test {

namespace {

std::uint64_t ToNumber(HANDLE handle)
{
    return reinterpret_cast<std::uintptr_t>(handle);
}

HANDLE Native(std::uint64_t number)
{
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number));
}

} // namespace

// Handles are assigned from the lowest number on, and a child's own handles have low ones: this one gets a high number.
InheritableHandle::InheritableHandle()
{
    std::vector<HANDLE> low(1000);
    for (HANDLE &handle : low)
        handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
    m_number = ToNumber(CreateEventW(&attributes, TRUE, FALSE, nullptr));
    EXPECT_NE(m_number, 0u);
    for (const HANDLE handle : low)
        CloseHandle(handle);
}

InheritableHandle::~InheritableHandle()
{
    CloseHandle(Native(m_number));
}

bool IsOpen(std::uint64_t number)
{
    DWORD flags = 0;
    return GetHandleInformation(Native(number), &flags) != 0;
}

NoInput::NoInput() : m_kept(ToNumber(GetStdHandle(STD_INPUT_HANDLE)))
{
    SetStdHandle(STD_INPUT_HANDLE, nullptr);
}

NoInput::~NoInput()
{
    SetStdHandle(STD_INPUT_HANDLE, Native(m_kept));
}

bool InterruptOwnGroup()
{
    return SetConsoleCtrlHandler(nullptr, TRUE) && GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

void EndThisThread(std::uint32_t exit_code)
{
    ExitThread(exit_code);
}

} // namespace kessil::test
