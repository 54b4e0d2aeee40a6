#pragma once

#include "rows/adapter_row.h"

namespace kessil::test {

/// The names of a call. Most calls have one name throughout.
struct RestoreName
{
    RestoreName(const char *name) : RestoreName(name, name, std::string("SIGNATURE_VADP") + name) {}
    RestoreName(std::string the_function, std::string the_handler, std::string the_signature)
        : function(std::move(the_function)), handler(std::move(the_handler)), signature(std::move(the_signature))
    {}

    std::string function;
    std::string handler; ///< behind Process_VADP and ProcessAlt_VADP
    std::string signature;
};

extern const RestoreName power_on;
extern const RestoreName power_off;

/// Earlier calls, by what they leave behind.
Step RestoreSession(const std::string &address);
Step RestoreFile(const std::string &address);
extern const Step restore_credentials;           ///< 0x101
extern const std::vector<Step> restore_sessions; ///< 0x500 to 0x502
extern const std::vector<Step> restore_files;    ///< 0x600 to 0x602

/// The line that every function logs, which travels ahead of the answer: as a frame, or bare with the mark behind it.
extern const std::string restore_frame;
extern const std::string restore_line;

/// Restore, with the arguments in the section.
const std::vector<AdapterRow> &RestoreRows();

/// The same by command, with bare values on the pipe.
const std::vector<CommandRow> &RestoreCommands();

} // namespace kessil::test
