// SPDX-License-Identifier: MIT
#pragma once

#include "lab/notation/Complaint.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace lab {

struct JsonMember;

/// A value of a JSON text that knows the line on which it ends.
struct JsonValue {
    enum class Kind { Null, Boolean, Number, Text, List, Object };

    Kind kind = Kind::Null;
    int line = 0; ///< from 1; of lists and objects the line on which they begin
    bool boolean = false;
    double number = 0.0;
    QString text;
    std::vector<JsonValue> items;
    std::vector<JsonMember> members; ///< in the order of the text; names may repeat

    /// The first member of this name; null without one.
    const JsonMember *find(const QString &name) const;
};

struct JsonMember {
    QString name;
    int line = 0; ///< of the name
    JsonValue value;
};

/// "a text", "a list" and so on, for complaints.
QString kindName(JsonValue::Kind kind);

/**
 * The same text in plain JSON: comments (to the end of a line behind two slashes, and between slashes with stars) and
 * commas behind the last item become blanks, so that every line and column stays where it is.
 */
QByteArray plainJson(const QByteArray &text);

/// Reads a JSON text, with comments and commas as plainJson() has them. @return nothing, and one complaint, when it is no JSON
std::optional<JsonValue> parseJson(const QByteArray &text, Complaints &complaints);

} // namespace lab
