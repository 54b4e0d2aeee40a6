#pragma once

#include "channel/ipc_communication.h"
#include "fakes/call_log.h"
#include "fakes/fake_module.h"
#include "fakes/fake_pipe.h"
#include "fakes/fake_section.h"
#include "support/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kessil::test {

/// What the log received since the test began, each record as "<level> <component>: <text>". The level is debug.
std::vector<std::string> &Logged();

/// All fakes and the log begin anew.
void ResetFakes();

/// Base of the tests that need fakes.
class FakesTest : public ::testing::Test
{
protected:
    FakesTest() { ResetFakes(); }
};

/// A channel over the fakes, not attached yet.
class ChannelOnFakes
{
public:
    /// Attaches, and forgets the calls that it took.
    void Attach();

    /// Has the parent announce a section of that content, and forgets the calls that it took.
    void GiveSection(const WideString &name, const Bytes &content);

    /// Forgets the calls, the log and what was written.
    void Forget();

    /// The first `count` bytes of the current section.
    Bytes Section(std::size_t count) const;

    CIPCCommunication channel;
    WideString error;
};

class UnattachedTest : public FakesTest, protected ChannelOnFakes
{};

class ChannelTest : public UnattachedTest
{
protected:
    ChannelTest() { Attach(); }
};

} // namespace kessil::test
