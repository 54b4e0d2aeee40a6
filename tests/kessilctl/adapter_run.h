#pragma once

#include "tests/kessilctl/scripted_run.h"

namespace kessil::test {

/// Runs the jobs with an adapter, with a real helper. image_adapter serves the directory `root`, which is the first
/// text of its credentials; the password is empty.
class AdapterTest : public ScriptedRun
{
protected:
    AdapterTest();

    /// Runs a job of `kessilctl adapter` with image_adapter.
    Outcome RunAdapter(const std::string &task, const std::vector<std::string> &arguments);

    /// The same, interrupted as soon as the error stream has `text`.
    Outcome RunAdapterInterrupted(const std::string &text, const std::string &task,
                                  const std::vector<std::string> &arguments);

    /// Runs a job with the adapter that misbehaves, without credentials.
    Outcome RunStrangeAdapter(const std::string &task, const std::vector<std::string> &arguments);

    std::filesystem::path root;
    std::string serving; ///< what the adapter logs first

private:
    std::vector<std::string> Arguments(const std::string &task, const std::vector<std::string> &arguments);
};

} // namespace kessil::test
