// SPDX-License-Identifier: MIT
#pragma once

#include "client/terminal/ExitCode.h"
#include "lab/notation/Complaint.h"
#include "lab/notation/Dimension.h"
#include "lab/notation/JsonOutput.h"
#include "lab/runs/SafetyLimits.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace client {

/**
 * One subcommand of the program: declares its options when it is made, does its work in run().
 *
 * @thread The main thread.
 */
class Command
{
public:
    virtual ~Command() = default;
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    bool isChosen() const { return _app->parsed(); }
    /// Whether pictures will be drawn, which takes an application object of its own.
    virtual bool drawsPictures() const { return false; }
    /// Called once the options are read and the application object exists. @return the exit code of the program
    virtual int run() = 0;

protected:
    /// @p examples stand at the end of the command's help.
    Command(CLI::App &parent, const char *name, const char *description, const char *examples);

    CLI::App &app() { return *_app; }

    void addPort(std::string &port);
    void addChannel(int &channel);
    CLI::Option *addChannels(std::vector<int> &channels);
    void addJson(bool &wantsJson);
    /// An option that takes a number with a unit, such as "10 mA"; a time has to be above 0.
    CLI::Option *addQuantity(const char *name, lab::Dimension dimension, std::optional<double> &value,
                             const char *help);
    /// The five options of the limits that the instrument watches.
    void addSafetyLimits(lab::SafetyLimits &limits);

    /// Writes to standard output, with a line feed.
    static void printJson(const lab::Json &json);
    /// Writes complaints about a file to the console, each as "path:line: text".
    static void tellComplaints(const QString &path, const lab::Complaints &complaints);

private:
    CLI::App *_app; // owned by the parent
};

} // namespace client
