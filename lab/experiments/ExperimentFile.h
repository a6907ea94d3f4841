// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"
#include "VekExperiment.h"
#include "lab/notation/Complaint.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace lab {

constexpr int largestRepeatCount = 65535; ///< of an element or a group

/// One element of an experiment file. Its step number in the run is its position in the file, counted from 1.
struct FileElement {
    int line = 0;
    QString className; ///< as the file names it: "ConstantCurrent"
    std::shared_ptr<VekAbstractElement> element;
    std::map<QString, int> propertyLines; ///< of the properties that stand in the file
    std::set<QString> unread;             ///< the properties whose values are not what the file means
};

/// What was read from an experiment file.
struct ExperimentFile {
    QString path;
    QByteArray text; ///< the file as it stands
    QString name;
    QString description;
    VekExperiment experiment;
    std::vector<FileElement> elements; ///< in the order of the file, those of groups too
    Complaints complaints;             ///< the experiment may be used only without any

    bool isUsable() const { return complaints.empty(); }
};

/// The version of the file format that this program reads.
constexpr int experimentSchemaVersion = 1;

/**
 * Reads an experiment file; see docs/experiments.md for the format.
 *
 * All complaints are collected, each with its line: unknown names (with the one that was probably meant), wrong types,
 * unknown units, missing and doubled properties. Limits of an instrument are not looked at.
 */
ExperimentFile readExperimentFile(const QString &path);

/// The same for a text; @p path is only remembered.
ExperimentFile parseExperiment(const QByteArray &text, const QString &path);

} // namespace lab
