#pragma once

#include <QByteArray>

class QIODevice;
class QSerialPort;

/**
 * The talk with a serial bootloader: blocking calls on a port that no event loop serves.
 *
 * @thread The one that has opened the port. A request to interrupt it ends every wait.
 */
namespace SerialBootloader {

/// Tries to open the port for reading and writing, for 10 s at most.
bool tryOpen(QSerialPort &port);
/// Reads up to @p size bytes; fewer when they have not come within 5 s.
QByteArray waitForResponse(QSerialPort &port, int size);
/// Whether so many replies come as expected; which board answers does not matter.
bool checkResponses(QSerialPort &port, const QByteArray &expected, int count);
/// Sends the next records of an image, at most @p count; other lines are skipped. @return how many
int writeRecords(QSerialPort &port, QIODevice &file, int count);

} // namespace SerialBootloader
