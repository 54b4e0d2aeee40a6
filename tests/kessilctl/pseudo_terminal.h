#pragma once

#include <string>
#include <vector>

namespace kessil::test {

/// A program on a terminal of its own, and the user at it. Linux only.
class PseudoTerminal
{
public:
    explicit PseudoTerminal(const std::vector<std::string> &program_and_arguments);
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    /// Waits until what was shown so far contains `text`. The test fails when that takes too long.
    void Await(const std::string &text);

    void Type(const std::string &text) const;
    void Send(int signal) const;

    /// Whether the terminal echoes what is typed.
    bool Echoes() const;

    /// Waits for the program's end. Returns its exit code, or minus the signal that ended it.
    int AwaitEnd();

    /// Everything that the program and the echo wrote, with the terminal's line ends.
    const std::string &Shown() const { return m_shown; }

private:
    bool ReadMore();

    int m_master = -1;
    int m_terminal = -1; ///< kept open, so that the terminal's state outlives the program
    int m_program = -1;
    std::string m_shown;
};

} // namespace kessil::test
