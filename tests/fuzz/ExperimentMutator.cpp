// SPDX-License-Identifier: MIT
// Changes to experiment files that bytes changed at random seldom make: one value takes the place of another.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize,
                                               unsigned seed);

namespace {

// clang-format off
const char *const values[] = {
    "0", "-0", "-1", "0.5", "1e9", "1e308", "-1e308", "1e-308", "1e400", "65536", "4294967296", "true", "false", "null",
    "[]", "{}", "\"\"", "\"none\"", "\"1 mA\"", "\"-5 uA\"", "\"1 V\"", "\"-10 mV vs OCP\"", "\"1 h\"", "\"2 Ah\"",
    "\"\\ud800\"", "\"\\u0000\"",
};
// clang-format on

bool isOfWord(char letter)
{
    return std::isalnum(static_cast<unsigned char>(letter)) || letter == '-' || letter == '+' || letter == '.';
}

/// A value, or the name of a member.
struct Span {
    std::size_t begin;
    std::size_t end;
};

/// The end of the text in quotes that begins here, behind its closing quote.
std::size_t endOfText(const std::string &json, std::size_t begin)
{
    std::size_t at = begin + 1;
    while (at < json.size() && json[at] != '"')
        at += json[at] == '\\' ? 2 : 1;
    return std::min(at + 1, json.size());
}

std::vector<Span> valuesIn(const std::string &json)
{
    std::vector<Span> found;
    for (std::size_t at = 0; at < json.size();) {
        const std::size_t begin = at;
        if (json[at] == '"')
            at = endOfText(json, begin);
        while (at < json.size() && isOfWord(json[at]))
            ++at;
        if (at > begin)
            found.push_back({begin, at});
        else
            ++at;
    }
    return found;
}

} // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    std::minstd_rand random(seed);
    const auto pick = [&random](std::size_t count) { return random() % count; };
    std::string json(reinterpret_cast<const char *>(data), size);
    const std::vector<Span> found = pick(2) == 0 ? valuesIn(json) : std::vector<Span>();
    if (found.empty())
        return LLVMFuzzerMutate(data, size, maxSize);
    const Span &place = found[pick(found.size())];
    const Span &other = found[pick(found.size())];
    json.replace(place.begin, place.end - place.begin,
                 pick(2) == 0 ? values[pick(std::size(values))] : json.substr(other.begin, other.end - other.begin));
    const std::size_t changed = std::min(json.size(), maxSize);
    std::copy_n(json.begin(), changed, data);
    return changed;
}
