#pragma once
// Every subcommand of the tunebox executable adds itself to the parser here.

#include <CLI/CLI.hpp>
#include <string>

namespace tunebox::cli {

// Exit status for bad input: a missing, unreadable or unsupported file.
inline constexpr int kExitBadInput = 2;

// "tunebox" and the project's version.
std::string versionText();

// Each register function adds one subcommand whose callback stores its exit
// status in `status`.
// The version subcommand and the --version flag.
void registerVersionCommand(CLI::App& app, int& status);
void registerTuneCommand(CLI::App& app, int& status);
void registerInfoCommand(CLI::App& app, int& status);
void registerDecodeCommand(CLI::App& app, int& status);
void registerFxCommand(CLI::App& app, int& status);
void registerCalibrateCommand(CLI::App& app, int& status);
void registerRecordCommand(CLI::App& app, int& status);
void registerMonitorCommand(CLI::App& app, int& status);
void registerDemoCommand(CLI::App& app, int& status);
void registerPlayCommand(CLI::App& app, int& status);
void registerRepairCommand(CLI::App& app, int& status);
void registerRemixCommand(CLI::App& app, int& status);
void registerExportCommand(CLI::App& app, int& status);
void registerLyricsCommand(CLI::App& app, int& status);

}  // namespace tunebox::cli
