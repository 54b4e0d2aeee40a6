#pragma once

#include "kessilctl/console/command_line.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

namespace kessil::kessilctl {

/// A subcommand, and the record that its options fill.
template <typename Options>
struct JobParser
{
    CLI::App &app;
    Options &options; ///< lives as long as `app`
};

/// Adds the subcommand of a job to `parent`. When it is the one that was given, its name, behind `prefix`, and its
/// record become the command line's.
template <typename Options>
JobParser<Options> AddJob(CLI::App &parent, CommandLine &command, const std::string &prefix, const std::string &name,
                          const std::string &description)
{
    auto options = std::make_shared<Options>();
    CLI::App &app = *parent.add_subcommand(name, description);
    app.callback([&command, options, full_name = prefix + name] {
        command.name = full_name;
        command.job = std::move(*options);
    });
    return {app, *options};
}

/// Adds the option that names the library to host.
void AddLibrary(CLI::App &app, std::string &library);

/// Adds the options that all jobs have to one of them.
using AddCommonOptions = std::function<void(CLI::App &)>;

/// Adds the subcommand `adapter`, with one of its own for each job with an adapter.
void AddAdapterJobs(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common);

} // namespace kessil::kessilctl
