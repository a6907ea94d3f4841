// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <map>

class VekAbstractElement;
struct VekInstrumentDescription;

namespace lab {

/**
 * A complaint of the library about a value with the prefixes that people write: "-5e+07 W" becomes "-50 MW". All digits
 * stay, so that a value just beyond its limit does not look like the limit.
 */
QString withPrefixes(const QString &complaint);

/// The same with the word for no limit that experiment files have: "none".
QString inWordsOfFiles(const QString &complaint);

/// What a user calls a property of an element: "maxVoltage", "--max-voltage".
using OptionNames = std::map<QString, QString>;

/**
 * What a model says against values of an element that nobody runs, each with the range that the model has.
 *
 * @param names of the properties that are of interest; complaints about others are left out
 */
QStringList faultsOf(VekAbstractElement &element, const OptionNames &names, const VekInstrumentDescription &instrument);

} // namespace lab
