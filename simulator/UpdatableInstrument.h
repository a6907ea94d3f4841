// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/FlashMemory.h"
#include "simulator/GaleBootloader.h"
#include "simulator/HidBootloader.h"
#include "simulator/HidNode.h"
#include "simulator/SimulatedInstrument.h"

#include <QProcess>

#include <optional>

/**
 * An instrument with its flash: it runs its firmware or its bootloader, and restarts from one into the other.
 *
 * A soft reset of the firmware leads to the bootloader, which starts the firmware after an update. What is not whole is
 * never started. The main line's bootloader is a HID, during which the serial port is gone; the Gale line's one is on
 * the serial port. What the firmware reports as its checksum follows from what the flash holds.
 *
 * @thread Lives on one thread, which must run an event loop.
 */
class UpdatableInstrument : public QObject
{
    Q_OBJECT

public:
    enum class Firmware {
        Current, ///< the image that the library carries
        Old,     ///< another one, which it does not
        None,    ///< blank flash: the instrument stays in its bootloader
    };
    struct Setup {
        SimulatedInstrument::Setup instrument;
        Firmware firmware = Firmware::Current;
        QString hidPath;            ///< node of the HID bootloader; none if empty
        std::optional<int> release; ///< that the HID bootloader tells; the model's number if empty
        QString onChange;           ///< command that is run before a personality's node is opened; none if empty
    };

    UpdatableInstrument(const Setup &setup, std::vector<std::unique_ptr<Cell>> cells, QObject *parent = nullptr);
    ~UpdatableInstrument() override;

    /// Files to write to; borrowed, and may be null.
    void setFiles(TruthFile *truth, PassFile *passes) { _instrument.setFiles(truth, passes); }
    QString statistics() const { return _instrument.statistics(); }
    /// Why its link or its socket cannot be made, as far as that shows before start(); an empty text if nothing speaks
    /// against it. Nothing is touched.
    QString obstacle() const;
    /// Switches it on; cameUp() or failed() follows.
    void start();

Q_SIGNALS:
    /// It can be reached at this path.
    void cameUp(const QString &path);
    void failed(const QString &reason);
    /// A fault has pulled the cable for good.
    void unplugged();

private:
    enum class Personality { Firmware, Bootloader };

    bool isGale() const { return _setup.instrument.model == HardwareModel_t::Gale; }
    /// A port without a link would come back under another name; it stays open then, as an adapter's would.
    bool keepsPort() const;
    QByteArray checksum() const;
    void restart(Personality next);
    void losePower();
    void goDark();
    void change();
    void onChangeCommandState(QProcess::ProcessState state);
    void comeUp();
    void openPort();
    void openHidNode();
    void obey(BootEvent event);
    void onSerialBytes(const QByteArray &bytes);
    void onReport(ReportChannel *channel, const QByteArray &report);

    Setup _setup;
    std::shared_ptr<const HardwareModel> _model;
    QList<QByteArray> _carriedImage; ///< the records that the library has for the model
    FlashMemory _flash;
    SimulatedInstrument _instrument;
    GaleBootloader _galeBootloader;
    std::unique_ptr<HidBootloader> _hidBootloader; ///< fresh after each restart
    HidNode _hidNode;
    QProcess _changeCommand;
    Personality _personality = Personality::Firmware;
    bool _isUp = false;
    bool _hasCome = false; ///< the port, once at least
};
