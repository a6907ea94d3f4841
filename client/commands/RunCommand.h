// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"
#include "lab/notation/JsonOutput.h"

#include <QString>

#include <memory>

class VekErrorCode;
class VekInstrumentHandler;

namespace lab {
class RecordedRun;
class RunRecorder;
class RunSignals;
struct ExperimentFile;
} // namespace lab

namespace client {

class Connection;

/// Runs experiments on one or several channels and records them.
class RunCommand : public Command
{
public:
    explicit RunCommand(CLI::App &parent);
    ~RunCommand() override;
    bool drawsPictures() const override { return _plots; }
    int run() override;

private:
    /// One channel's share of the work.
    struct Task {
        int channel;
        const lab::ExperimentFile *file;
        std::unique_ptr<lab::RunRecorder> recorder;
        std::unique_ptr<lab::RecordedRun> run;
    };

    ExitCode readFiles();
    std::vector<int> drivenChannels() const;
    ExitCode linkChannels(const Connection &connection);
    ExitCode assignChannels();
    VekErrorCode applyLimits(const VekInstrumentHandler &handler, unsigned char channel) const;
    ExitCode upload(const Connection &connection, Task &task) const;
    ExitCode start(const Connection &connection, Task &task) const;
    ExitCode startAll(const Connection &connection);
    void wait();
    bool isOver() const;
    void onInterrupted() const;
    void interruptAll() const;
    ExitCode report() const;
    static void tellEnd(const Task &task, bool hasToldLoss);
    static lab::Json summaryOf(const Task &task);
    QString folderOf(const Task &task) const;
    QStringList progressLines(const lab::RecordedRun &latest, int room) const;

    std::vector<std::string> _paths;
    std::string _port;
    std::vector<int> _channels{0};
    std::vector<std::string> _parallelGroups; // lists such as "0,1,2,3"
    std::vector<std::string> _bipolarGroups;
    std::string _folder;
    bool _plots = false;
    bool _keepsGoing = false;
    bool _wantsJson = false;
    lab::SafetyLimits _limits;

    std::vector<lab::ExperimentFile> _files;
    std::unique_ptr<lab::RunSignals> _signals; // outlives the runs of the tasks
    std::vector<Task> _tasks;
};

} // namespace client
