#pragma once

class VekInstrumentHandler;

namespace client {

/**
 * Stops what runs on a channel and lets events run until the instrument confirms, for at most 5 s: a program that
 * ended earlier might leave the cell under control.
 *
 * @return whether the end was confirmed
 * @thread The main thread.
 */
bool stopChannel(const VekInstrumentHandler &handler, unsigned char channel);

} // namespace client
