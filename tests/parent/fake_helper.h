#pragma once

#include "fakes/call_log.h"
#include "fakes/fake_last_error.h"
#include "fakes/fake_pipe_server.h"
#include "fakes/fake_private_section.h"
#include "fakes/fake_process.h"

#include <kessil/parent.h>

#include <gtest/gtest.h>

#include <memory>

namespace kessil::parent {

/// A system of fakes, reset by the constructor, in which the one program there is is a helper. Once started it connects
/// to its pipe, and the test answers for it by `client`.
class FakeHelper
{
public:
    FakeHelper()
    {
        test::call_log = {};
        test::fake_last_error = {};
        test::fake_pipe_server = {};
        test::fake_section = {};
        test::fake_process = {};
        options.program = "fake_helper";
        const WideString path = std::filesystem::absolute(options.program).u16string();
        test::fake_process.programs[path] = [this](const test::FakeStart &start) { return Run(start); };
    }

    FakeHelper(const FakeHelper &) = delete;
    FakeHelper &operator=(const FakeHelper &) = delete;

    /// Fails the test unless everything has been released.
    static void ExpectNothingHeld()
    {
        EXPECT_EQ(test::fake_process.held, 0u);
        EXPECT_EQ(test::fake_section.open_handles, 0u);
        EXPECT_EQ(test::fake_section.views, 0u);
        EXPECT_TRUE(test::fake_pipe_server.servers.empty());
    }

    Options options;                                ///< for a parent that runs this helper
    test::FakeRun run;                              ///< how the process ends
    std::shared_ptr<test::FakePipeClient> stranger; ///< tries the pipe before the helper does; none if null
    std::shared_ptr<test::FakePipeClient> client;   ///< the helper's end of the pipe, since the start

private:
    test::FakeRun Run(const test::FakeStart &start)
    {
        const WideString &pipe = start.arguments.at(0);
        if (stranger) {
            EXPECT_TRUE(test::fake_pipe_server.Connect(pipe, stranger));
        }
        client = std::make_shared<test::FakePipeClient>(start.process_id);
        EXPECT_TRUE(test::fake_pipe_server.Connect(pipe, client));
        return run;
    }
};

} // namespace kessil::parent
