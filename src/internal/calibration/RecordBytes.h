// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// Reads a packed record from bytes that hold all of it.
template <class Record>
Record recordAt(const char *bytes)
{
    static_assert(std::is_trivially_copyable<Record>::value, "a record is plain bytes");
    Record record;
    std::memcpy(static_cast<void *>(&record), bytes, sizeof record);
    return record;
}

/**
 * Reads a packed record from the front of some bytes. What the bytes lack reads as zero, what exceeds the record is left
 * alone; so no length that an instrument claims makes us read past the end. Records are little-endian, as is the host.
 */
template <class Record>
Record recordFromBytes(const char *bytes, int size)
{
    static_assert(std::is_trivially_copyable<Record>::value, "a record is plain bytes");
    Record record;
    std::memset(static_cast<void *>(&record), 0, sizeof record); // not the record's defaults: zeros
    if (bytes && size > 0)
        std::memcpy(&record, bytes, std::min(sizeof record, static_cast<std::size_t>(size)));
    return record;
}

template <class Record>
Record recordFromBytes(const QByteArray &bytes)
{
    return recordFromBytes<Record>(bytes.constData(), bytes.size());
}

/// The bytes of a packed record as they travel.
template <class Record>
QByteArray bytesOfRecord(const Record &record)
{
    static_assert(std::is_trivially_copyable<Record>::value, "a record is plain bytes");
    return QByteArray(reinterpret_cast<const char *>(&record), int(sizeof record));
}
