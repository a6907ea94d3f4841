// SPDX-License-Identifier: MIT
#include "simulator/UpdatableInstrument.h"

#include "hardware_models/HardwareModelFactory.h"
#include "images/HexLoader.h"
#include "simulator/OwnPaths.h"

namespace {

constexpr int restartMs = 200;    ///< a host may see that the instrument has gone
constexpr int powerLossMs = 1500; ///< a host that polls once a second sees it too

} // namespace

UpdatableInstrument::UpdatableInstrument(const Setup &setup, std::vector<std::unique_ptr<Cell>> cells, QObject *parent)
    : QObject(parent), _setup(setup), _model(HardwareModelFactory::getHardwareModel(setup.instrument.model)),
      _carriedImage(HexLoader::ReadFile(HexLoader::getDefaultHexPath(_model->hexFileName()))),
      _instrument(setup.instrument, std::move(cells)),
      _galeBootloader(_flash, _setup.instrument.faults.boot, _instrument.hardwareRecord(), _instrument.channelCount()),
      _hidNode(setup.hidPath, {0x04D8, 0x003C, quint16(setup.release.value_or(int(setup.instrument.model)))})
{
    if (setup.firmware != Firmware::None)
        _flash.load(_carriedImage);
    if (setup.firmware == Firmware::Old)
        _flash.age();
    _changeCommand.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    _changeCommand.setStandardOutputFile(QProcess::nullDevice());
    connect(&_changeCommand, &QProcess::stateChanged, this, &UpdatableInstrument::onChangeCommandState);
    connect(&_instrument, &SimulatedInstrument::unplugged, this, &UpdatableInstrument::unplugged);
    // Queued: what has come with the reset is still obeyed.
    connect(
        &_instrument, &SimulatedInstrument::resetRequested, this, [this] { restart(Personality::Bootloader); },
        Qt::QueuedConnection);
    connect(&_instrument.serialEnd(), &SerialEnd::received, this, &UpdatableInstrument::onSerialBytes);
    connect(&_hidNode, &HidNode::received, this, &UpdatableInstrument::onReport);
}

UpdatableInstrument::~UpdatableInstrument()
{
    _changeCommand.disconnect(this); // its end means nothing any more
    _changeCommand.kill();
    _changeCommand.waitForFinished();
}

bool UpdatableInstrument::keepsPort() const
{
    return isGale() && _setup.instrument.linkPath.isEmpty() && _setup.instrument.devicePath.isEmpty();
}

/// Of the image that the library has, what its signature says; the firmware's build knows how it came by it.
QByteArray UpdatableInstrument::checksum() const
{
    FlashMemory carried;
    carried.load(_carriedImage);
    return _flash.image() == carried.image() ? QByteArray::fromHex(_model->hexFileCheckSum().toLatin1())
                                             : firmwareChecksum(_flash.image());
}

QString UpdatableInstrument::obstacle() const
{
    const QString link = _setup.instrument.linkPath;
    const QString atLink = link.isEmpty() ? QString() : OwnPaths::obstacleAt(link, OwnPaths::Kind::Link);
    if (!atLink.isEmpty())
        return QStringLiteral("cannot make the link %1: %2").arg(link, atLink);
    const QString socket = _hidNode.isDevice() ? QString() : _setup.hidPath;
    const QString atSocket = socket.isEmpty() ? QString() : OwnPaths::obstacleAt(socket, OwnPaths::Kind::Socket);
    return atSocket.isEmpty() ? QString() : QStringLiteral("cannot make the socket %1: %2").arg(socket, atSocket);
}

void UpdatableInstrument::start()
{
    _personality = _setup.firmware == Firmware::None ? Personality::Bootloader : Personality::Firmware;
    goDark();
    change();
}

void UpdatableInstrument::restart(Personality next)
{
    _personality = next;
    goDark();
    if (keepsPort())
        comeUp(); // at once: what the host sends meanwhile would be lost
    else
        QTimer::singleShot(restartMs, this, &UpdatableInstrument::change);
}

void UpdatableInstrument::losePower()
{
    _personality = _flash.isComplete() ? Personality::Firmware : Personality::Bootloader;
    goDark();
    QTimer::singleShot(powerLossMs, this, &UpdatableInstrument::change);
}

void UpdatableInstrument::goDark()
{
    _isUp = false;
    _instrument.switchOff();
    _hidNode.close();
    if (!keepsPort())
        _instrument.serialEnd().unplug();
}

void UpdatableInstrument::change()
{
    if (_setup.onChange.isEmpty())
        return comeUp();
    const QString word =
        _personality == Personality::Firmware ? QStringLiteral("firmware") : QStringLiteral("bootloader");
    _changeCommand.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), _setup.onChange + QStringLiteral(" \"$1\""),
                                                     QStringLiteral("sh"), word});
}

void UpdatableInstrument::onChangeCommandState(QProcess::ProcessState state)
{
    if (state != QProcess::NotRunning)
        return;
    if (_changeCommand.error() == QProcess::UnknownError && _changeCommand.exitCode() == 0)
        comeUp();
    else
        Q_EMIT failed(QStringLiteral("'%1' has failed").arg(_setup.onChange));
}

void UpdatableInstrument::comeUp()
{
    _isUp = true;
    if (_personality == Personality::Firmware || isGale())
        openPort();
    else
        openHidNode();
}

void UpdatableInstrument::openPort()
{
    SerialEnd &port = _instrument.serialEnd();
    if (!port.isOpen() && !port.plug())
        return Q_EMIT failed(port.errorText());
    if (_personality == Personality::Firmware)
        _instrument.switchOn(checksum());
    else
        _galeBootloader.restart();
    if (!keepsPort() || !_hasCome)
        Q_EMIT cameUp(port.portName());
    _hasCome = true;
}

void UpdatableInstrument::openHidNode()
{
    if (_setup.hidPath.isEmpty())
        return Q_EMIT failed(QStringLiteral("in its HID bootloader, for which there is no node (--hid)"));
    _hidBootloader = std::make_unique<HidBootloader>(_flash, _setup.instrument.faults.boot);
    if (!_hidNode.open(_setup.instrument.faults.boot.takeDeafness()))
        return Q_EMIT failed(_hidNode.errorText());
    Q_EMIT cameUp(_hidNode.path());
}

void UpdatableInstrument::obey(BootEvent event)
{
    if (event == BootEvent::Restart)
        restart(Personality::Bootloader);
    else if (event == BootEvent::StartFirmware)
        restart(_flash.isComplete() ? Personality::Firmware : Personality::Bootloader);
    else if (event == BootEvent::PowerLoss)
        losePower();
}

void UpdatableInstrument::onSerialBytes(const QByteArray &bytes)
{
    if (!_isUp || _personality != Personality::Bootloader)
        return;
    QByteArray replies;
    const BootEvent event = _galeBootloader.take(bytes, replies);
    _instrument.serialEnd().write(replies);
    obey(event);
}

void UpdatableInstrument::onReport(ReportChannel *channel, const QByteArray &report)
{
    if (!_isUp)
        return;
    QList<QByteArray> replies;
    const BootEvent event = _hidBootloader->take(report, replies);
    for (const QByteArray &reply : qAsConst(replies))
        channel->write(reply);
    obey(event);
}
