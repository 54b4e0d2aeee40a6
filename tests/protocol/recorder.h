#pragma once

#include "protocol/conversation.h"

#include <string>

namespace kessil::test {

/// The record that the libraries of tests/targets keep, and the script that the scripted ones follow; for
/// helpers that start during this object's life.
class Recorder
{
public:
    explicit Recorder(const std::string &script = "");
    ~Recorder();
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    /// Replaces the script. The libraries notice at their next call.
    void Write(const std::string &script) const;

    /// All lines so far.
    std::string Lines() const;

private:
    TestDirectory m_directory;
};

} // namespace kessil::test
