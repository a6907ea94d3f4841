// SPDX-License-Identifier: MIT
#include "lab/experiments/Schema.h"

#include "VekAbstractElement.h"
#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/notation/Units.h"

namespace lab {

namespace {

/// "rate-of-voltage": the name of a dimension without its article, as a key.
std::string keyOf(Dimension dimension)
{
    return dimensionName(dimension)
        .section(QLatin1Char(' '), 1)
        .replace(QLatin1Char(' '), QLatin1Char('-'))
        .toStdString();
}

Json quantityDefinition(Dimension dimension)
{
    const QString unit = baseUnit(dimension);
    const QString plain = unit.isEmpty() ? QStringLiteral("a number") : QStringLiteral("a number in %1").arg(unit);
    return {{"type", {"number", "string"}},
            {"pattern", text(quantityPattern(dimension))},
            {"description", text(QStringLiteral("%1, or a text with a number and a unit").arg(plain))}};
}

Json quantitySchema(const PropertyRow &property)
{
    const Json quantity = {{"$ref", "#/$defs/" + keyOf(property.dimension)}};
    if (!property.mayBeNone())
        return quantity;
    return {{"anyOf", {quantity, {{"const", "none"}}}}};
}

Json propertySchema(const PropertyRow &property)
{
    switch (property.kind) {
    case PropertyKind::Quantity:
        return quantitySchema(property);
    case PropertyKind::Flag:
    case PropertyKind::Automatic:
        return {{"type", "boolean"}};
    case PropertyKind::Count:
        return {{"type", "integer"}, {"minimum", 0}};
    case PropertyKind::VoltageRange:
        return {{"enum", {0, 1, 2, 3, 5}}};
    }
    return {};
}

Json repeatsSchema()
{
    return {{"type", "integer"}, {"minimum", 1}, {"maximum", largestRepeatCount}, {"default", 1}};
}

Json elementSchema(const ElementRow &row)
{
    Json properties = {{"element", {{"const", row.name}}}, {"repeats", repeatsSchema()}};
    Json required = {"element"};
    for (const PropertyRow &property : row.properties) {
        properties[property.name] = propertySchema(property);
        if (property.isRequired)
            required.push_back(property.name);
    }
    return {{"type", "object"},
            {"description", row.summary},
            {"properties", properties},
            {"required", required},
            {"additionalProperties", false}};
}

Json listSchema()
{
    return {{"type", "array"}, {"minItems", 1}, {"items", {{"$ref", "#/$defs/item"}}}};
}

Json groupSchema()
{
    return {{"type", "object"},
            {"description", "Elements and groups that repeat as a whole."},
            {"properties", {{"group", listSchema()}, {"repeats", repeatsSchema()}, {"name", {{"type", "string"}}}}},
            {"required", {"group"}},
            {"additionalProperties", false}};
}

} // namespace

Json experimentSchema()
{
    Json alternatives = {{{"$ref", "#/$defs/group"}}};
    Json definitions = {{"group", groupSchema()}};
    for (const ElementRow &row : elementCatalogue()) {
        definitions[row.name] = elementSchema(row);
        for (const PropertyRow &property : row.properties) {
            if (property.kind == PropertyKind::Quantity)
                definitions[keyOf(property.dimension)] = quantityDefinition(property.dimension);
        }
        alternatives.push_back({{"$ref", std::string("#/$defs/") + row.name}});
    }
    definitions["item"] = {{"oneOf", alternatives}};
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
            {"title", "Nimbrelle experiment"},
            {"type", "object"},
            {"properties",
             {{"schemaVersion", {{"const", experimentSchemaVersion}}},
              {"name", {{"type", "string"}}},
              {"description", {{"type", "string"}}},
              {"elements", listSchema()}}},
            {"required", {"schemaVersion", "elements"}},
            {"additionalProperties", false},
            {"$defs", definitions}};
}

QString elementTables()
{
    QString tables;
    for (const ElementRow &row : elementCatalogue()) {
        tables += QStringLiteral("### %1\n\n%2\n\n| Property | Value | Default |\n|---|---|---|\n")
                      .arg(QString::fromLatin1(row.name), QString::fromLatin1(row.summary));
        const std::unique_ptr<VekAbstractElement> fresh = row.make();
        for (const PropertyRow &property : row.properties)
            tables += QStringLiteral("| `%1` | %2 | %3 |\n")
                          .arg(QString::fromLatin1(property.name), valueText(property), defaultText(property, *fresh));
        tables += QLatin1Char('\n');
    }
    return tables;
}

QString valueText(const PropertyRow &property)
{
    switch (property.kind) {
    case PropertyKind::Quantity: {
        const QString unit = baseUnit(property.dimension);
        QString wording = dimensionName(property.dimension);
        if (!unit.isEmpty())
            wording += QStringLiteral(" (%1)").arg(unit);
        return property.mayBeNone() ? wording + QStringLiteral(", or none") : wording;
    }
    case PropertyKind::Flag:
    case PropertyKind::Automatic:
        return QStringLiteral("true or false");
    case PropertyKind::Count:
        return QStringLiteral("a whole number");
    case PropertyKind::VoltageRange:
        return QStringLiteral("0 to 3, or 5 for automatic");
    }
    return {};
}

QString defaultText(const PropertyRow &property, const VekAbstractElement &fresh)
{
    if (property.isRequired)
        return QStringLiteral("required");
    const double value = property.get(fresh);
    if (property.kind == PropertyKind::Flag || property.kind == PropertyKind::Automatic)
        return value != 0.0 ? QStringLiteral("true") : QStringLiteral("false");
    if (std::isinf(value))
        return QStringLiteral("none");
    return QStringLiteral("%1 %2").arg(QString::number(value), baseUnit(property.dimension)).trimmed();
}

} // namespace lab
