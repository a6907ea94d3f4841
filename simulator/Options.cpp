// SPDX-License-Identifier: MIT
#include "simulator/Options.h"

#include "simulator/ModelNames.h"
#include "simulator/cells/CellFactory.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

namespace {

constexpr int mostChannels = 16;
constexpr int mostChannelsOfACycler = 64;
constexpr double fastest = 1000.0;

/// The command line's words, not yet understood.
struct Words {
    std::string model = "Alder_2_5";
    int channels = 1;
    std::string name = "Simulated";
    std::vector<std::string> cells;
    std::string speed = "1";
    quint32 seed = 1;
    double noise = 0.0;
    double temperature = 25.0;
    double counterResistance = 0.0;
    std::vector<std::string> harmonics;
    std::string link;
    std::string device;
    std::string firmware = "current";
    std::string hid;
    int release = -1;
    std::string onChange;
    std::vector<std::string> faults;
    std::string truth;
    std::string passes;
    bool statistics = false;
    bool listModels = false;
};

/// A complaint about a word; becomes the one line that the user sees.
class Complaint : public std::runtime_error
{
public:
    explicit Complaint(const QString &text) : std::runtime_error(text.toStdString()) {}
};

using Firmware = UpdatableInstrument::Firmware;
const std::map<std::string, Firmware> firmwares = {
    {"current", Firmware::Current}, {"none", Firmware::None}, {"old", Firmware::Old}};

void declare(CLI::App &app, Words &words)
{
    app.set_version_flag("--version", std::string("nimbrelle-sim ") + NIMBRELLE_VERSION);
    app.footer("\n" + cellHelp().toStdString() + "\n" + Faults::help().toStdString());
    app.add_option("--model", words.model, "Model, by name or number (--list-models)")->capture_default_str();
    app.add_option("--channels", words.channels, "Number of channels, 1 to 16, of a Gale to 64")
        ->check(CLI::Range(1, mostChannelsOfACycler))
        ->capture_default_str();
    app.add_option("--name", words.name, "Name that the instrument gives itself")->capture_default_str();
    app.add_option("--cell", words.cells, "Cell on all channels (KIND:NAME=VALUE,...), or on one (CHANNEL=KIND:...)")
        ->take_all();
    app.add_option("--speed", words.speed, "Instrument time against wall time, 1 to 1000, or max")
        ->capture_default_str();
    app.add_option("--seed", words.seed, "Decides calibration and noise")->capture_default_str();
    app.add_option("--noise", words.noise, "Noise (rms) as a share of each range's full scale")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    app.add_option("--temperature", words.temperature, "Degrees Celsius at the thermocouple; nan: not plugged in")
        ->capture_default_str();
    app.add_option("--counter-resistance", words.counterResistance, "Ohms between reference and counter electrode")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--harmonic", words.harmonics, "Harmonic of the current in AC records, ORDER=SHARE")->take_all();
    app.add_option("--link", words.link, "Path of a symbolic link to the port");
    app.add_option("--device", words.device, "Terminal to run on, instead of a pseudo-terminal")->excludes("--link");
    app.add_option("--firmware", words.firmware, "Firmware in the flash: current, old, or none (bootloader)")
        ->check(CLI::IsMember(firmwares))
        ->capture_default_str();
    app.add_option("--hid", words.hid, "Node of the HID bootloader: /dev/hidgN, or path of a socket to make");
    app.add_option("--release", words.release, "USB release number of the HID bootloader (the model's number)")
        ->check(CLI::Range(0, 0xFFFF));
    app.add_option("--on-change", words.onChange,
                   "Shell command that is run with 'firmware' or 'bootloader' before the instrument comes up so");
    app.add_option("--fault", words.faults, "Fault to simulate; may be given several times")->take_all();
    app.add_option("--truth", words.truth, "File for every DC record that is sent, in physical units");
    app.add_option("--passes", words.passes, "File for the charge of every pass of every node");
    app.add_flag("--stats", words.statistics, "Print at the end how many records were sent");
    app.add_flag("--list-models", words.listModels, "List the models and end");
}

double readSpeed(const std::string &text)
{
    if (text == "max")
        return 0.0;
    bool isNumber = false;
    const double speed = QString::fromStdString(text).toDouble(&isNumber);
    if (!isNumber || speed < 1.0 || speed > fastest)
        throw Complaint(QStringLiteral("--speed takes 1 to 1000, or max"));
    return speed;
}

/// "3=rc:..." gives 3 and cuts the number off; a description without a number gives -1.
int takeChannel(QString &description)
{
    bool isNumber = false;
    const int channel = description.section(QLatin1Char('='), 0, 0).toInt(&isNumber);
    if (!isNumber)
        return -1;
    description = description.section(QLatin1Char('='), 1);
    return channel;
}

std::vector<std::unique_ptr<Cell>> makeCells(const Words &words)
{
    std::vector<QString> descriptions(std::size_t(words.channels), QStringLiteral("resistor"));
    std::vector<std::pair<int, QString>> given;
    for (const std::string &word : words.cells) {
        QString description = QString::fromStdString(word);
        const int channel = takeChannel(description);
        if (channel >= words.channels)
            throw Complaint(QStringLiteral("--cell: there is no channel %1").arg(channel));
        given.emplace_back(channel, description);
    }
    // what names a channel goes over what names none, whatever their order
    std::stable_sort(given.begin(), given.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    for (const auto &[channel, description] : given) {
        if (channel < 0)
            std::fill(descriptions.begin(), descriptions.end(), description);
        else
            descriptions[std::size_t(channel)] = description;
    }
    std::vector<std::unique_ptr<Cell>> cells;
    for (const QString &description : descriptions) {
        CellOrError made = makeCell(description);
        if (!made.cell)
            throw Complaint(QStringLiteral("--cell: ") + made.error);
        cells.push_back(std::move(made.cell));
    }
    return cells;
}

AcFrontEnd::Harmonics readHarmonics(const std::vector<std::string> &texts)
{
    AcFrontEnd::Harmonics harmonics;
    for (const std::string &text : texts) {
        const QStringList parts = QString::fromStdString(text).split(QLatin1Char('='));
        bool isOrder = false;
        bool isShare = false;
        const int order = parts.first().toInt(&isOrder);
        const double share = parts.last().toDouble(&isShare);
        if (parts.size() != 2 || !isOrder || !isShare || order < 2 || order > 12)
            throw Complaint(QStringLiteral("--harmonic takes ORDER=SHARE with an order from 2 to 12"));
        harmonics[order] = share;
    }
    return harmonics;
}

void understandFaults(const std::vector<std::string> &texts, Faults &faults)
{
    for (const std::string &text : texts) {
        const QString error = faults.add(QString::fromStdString(text));
        if (!error.isEmpty())
            throw Complaint(QStringLiteral("--fault: ") + error);
    }
}

HardwareModel_t readModel(const Words &words)
{
    const auto model = modelNamed(QString::fromStdString(words.model));
    if (!model)
        throw Complaint(QStringLiteral("--model: there is no model '%1'").arg(QString::fromStdString(words.model)));
    if (words.channels > mostChannels && *model != HardwareModel_t::Gale)
        throw Complaint(QStringLiteral("--channels: only a Gale has more than %1").arg(mostChannels));
    return *model;
}

SimulatedInstrument::Setup readInstrument(const Words &words)
{
    SimulatedInstrument::Setup instrument;
    instrument.model = readModel(words);
    instrument.name = QString::fromStdString(words.name);
    instrument.speed = readSpeed(words.speed);
    instrument.linkPath = QString::fromStdString(words.link);
    instrument.devicePath = QString::fromStdString(words.device);
    instrument.channel.noise = words.noise;
    instrument.channel.temperature = words.temperature;
    instrument.channel.counterResistance = words.counterResistance;
    instrument.channel.seed = words.seed;
    instrument.harmonics = readHarmonics(words.harmonics);
    understandFaults(words.faults, instrument.faults);
    return instrument;
}

Options understand(const Words &words)
{
    Options options;
    options.setup.instrument = readInstrument(words);
    options.setup.firmware = firmwares.at(words.firmware);
    options.setup.hidPath = QString::fromStdString(words.hid);
    if (words.release >= 0)
        options.setup.release = words.release;
    options.setup.onChange = QString::fromStdString(words.onChange);
    options.cells = makeCells(words);
    options.truthPath = QString::fromStdString(words.truth);
    options.passesPath = QString::fromStdString(words.passes);
    options.wantsStatistics = words.statistics;
    return options;
}

} // namespace

std::optional<Options> parseOptions(int argc, char **argv, int &exitCode)
{
    CLI::App app("A simulated instrument on a pseudo-terminal. Prints the port's path on its first line.",
                 "nimbrelle-sim");
    Words words;
    declare(app, words);
    try {
        app.parse(argc, argv);
        exitCode = 0;
        if (!words.listModels)
            return understand(words);
        std::cout << modelList().join(QLatin1Char('\n')).toStdString() << std::endl;
    } catch (const CLI::Success &wordsOnly) {
        exitCode = app.exit(wordsOnly);
    } catch (const std::runtime_error &complaint) {
        std::cerr << "nimbrelle-sim: " << complaint.what() << std::endl;
        exitCode = 2;
    }
    return std::nullopt;
}
