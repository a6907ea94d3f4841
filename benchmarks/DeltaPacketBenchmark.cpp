// SPDX-License-Identifier: MIT
// What a battery cycler's channel makes of AC packets of each size: they are unpacked behind what has come of the batch.

#include "TableRow.h"
#include "channels/DeltaPacket.h"
#include "reference/PlainDeltaPacket.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int packetsOfABatch = 125; // a thousand samples
constexpr int batches = 160;         // a call takes long enough to be measured

template <class Packet>
std::vector<Packet> packetsOf(int size)
{
    std::mt19937 generator(20260105u);
    std::vector<Packet> packets;
    for (int i = 0; i < packetsOfABatch; ++i) {
        Packet packet;
        for (int byte = 0; byte < size; ++byte)
            packet.push_back(static_cast<typename Packet::value_type>(generator()));
        packets.push_back(packet);
    }
    return packets;
}

template <class Packet, class Batch>
TableRow::Work everyBatch(int size, void (*unpack)(const Packet &, Batch &))
{
    return [packets = packetsOf<Packet>(size), unpack] {
        for (int i = 0; i < batches; ++i) {
            Batch batch;
            for (const Packet &packet : packets)
                unpack(packet, batch);
            benchmark::DoNotOptimize(batch.data());
        }
    };
}

} // namespace

int main(int argc, char **argv)
{
    TableRow row("AC packets of 22, 36, 50 and 64 bytes, worst of them", "byte by byte", {Aim::TimesAtMost, 0.6});
    for (const int size : {22, 36, 50, 64})
        row.addCase("AC packets of " + std::to_string(size) + " bytes",
                    everyBatch(size, &unpackDeltaEncodedCompression), everyBatch(size, &plainDeltaPacket));
    return measureRows(argc, argv, {&row});
}
