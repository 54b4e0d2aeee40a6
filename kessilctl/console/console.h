#pragma once

#include <ostream>
#include <string>

namespace kessil::kessilctl {

class Progress;

/// Where a run prints: its result to `out`, everything else to `err`.
class Console
{
public:
    /// `width` is that of the terminal that `err` is, in columns; 0 when it is none. The streams outlive the object.
    Console(std::ostream &out_stream, std::ostream &err_stream, unsigned width)
        : out(out_stream), err(err_stream), columns(width)
    {}

    /// Writes a line to `err`, in the place of the progress bar if one is shown.
    void WriteLine(const std::string &line);

    /// WriteLine with the program's name in front.
    void WriteMessage(const std::string &message) { WriteLine("kessilctl: " + message); }

    std::ostream &out;
    std::ostream &err;
    const unsigned columns;

private:
    friend class Progress;

    Progress *m_progress = nullptr; ///< while one is shown
};

} // namespace kessil::kessilctl
