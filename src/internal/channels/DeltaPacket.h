// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/**
 * Unpacks one AC packet of a battery cycler: eight pairs of signed 32-bit words, current before voltage.
 *
 * The first pair travels as it is, each later one as the difference from the pair before. The length of the packet tells
 * how many bytes a difference takes: 50 bytes three, 36 two, 22 one, any other four. A packet that is too short is
 * filled up with zeros; sums wrap.
 *
 * @param batch what has come before; the pairs are appended as 64 bytes, little-endian
 */
void unpackDeltaEncodedCompression(const QByteArray &packet, QByteArray &batch);
