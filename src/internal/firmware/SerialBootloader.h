// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;
class QSerialPort;

/**
 * The talk with a serial bootloader: blocking calls on a port that no event loop serves.
 *
 * @thread The one that has opened the port. A request to interrupt it ends every wait. Times are those of Clock::host().
 */
namespace SerialBootloader {

/// Tries to open the port for reading and writing, for 10 s at most.
bool tryOpen(QSerialPort &port);
/// Reads up to @p size bytes; fewer when they have not come within 5 s.
QByteArray waitForResponse(QSerialPort &port, int size);
/// Whether so many replies come as expected; which board answers does not matter.
bool checkResponses(QSerialPort &port, const QByteArray &expected, int count);
bool answersPing(QSerialPort &port);
/**
 * Asks for the hardware record; its bytes behind the model are at most 64.
 *
 * @return false without a reply, and when it is another model's: what follows is for the Gale line alone
 */
bool readHardware(QSerialPort &port, QString &hardware);
/// Asks for the number of channels, of which a board has two. @return false without a reply
bool countBoards(QSerialPort &port, int &boards);
/// Unlocks and prepares the flash of all boards.
bool unlocksFlash(QSerialPort &port, int boards);
/// Sends the next records of an image, at most @p count; other lines are skipped.
/// @return how many; fewer at the image's end, or short of it where it cannot be read any further
int writeRecords(QSerialPort &port, QIODevice &file, int count);

} // namespace SerialBootloader
