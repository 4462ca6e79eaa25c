// What all subcommands of the tool share.
//
// Each subcommand stands in files of its own, <name>_command.{h,cpp}, with one function that adds it:
//
//   void Add<Name>Command(CLI::App& app, CommandContext& context);
//
// It declares the options into a struct that the callback holds, and stores in `context.action` what to do.
// The frame runs the action when the whole command line is read, modules are loaded and the common options
// are in force:
//
//   auto options = std::make_shared<RunOptions>();
//   auto* command = app.add_subcommand("run", "Run a kernel");
//   command->callback([options, &context] { context.action = [options](auto& c) { return RunKernel(*options,
//   c); }; });
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

#include <norvi/host/module.h>

namespace norvi {

struct CommandContext {
    /// Loaded when the action begins. Objects of module classes must be gone when it returns.
    ModuleLoader modules;
    /// --quiet: results and errors only, no progress, tables or remarks.
    Bool isQuiet = false;
    /// What the chosen subcommand does. A failure is printed to the standard error stream, and makes the exit
    /// status 1.
    std::function<Result<void>(CommandContext&)> action;
};

/// The footer of a command's help: an "Examples:" line and the lines below it, which must work as they stand
/// in an empty folder, one after another.
String ExamplesText(std::initializer_list<const char*> lines);

} // namespace norvi
