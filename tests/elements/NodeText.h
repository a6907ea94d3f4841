// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeList.h"

#include <QStringList>

/**
 * A record in words: its type, in brackets its parameters up to the last that is not 0, then whatever differs from a
 * record without settings. A parameter that is no sensible float is shown as a word in hex: "31(0.75 0 -0.25 #1fffe)".
 */
QString textOf(const ExpNode_t &node);

/**
 * A list of nodes, one text each: step number, with s where it opens a step, c a cycle, r for a rest and t for a time
 * series; the name; the record; how many samples make one, and the filter: "1s Rest: 1(0.5) 60 s, every 20".
 */
QStringList textOf(const NodeList &list);
