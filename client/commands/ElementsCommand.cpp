// SPDX-License-Identifier: MIT
#include "client/commands/ElementsCommand.h"

#include "VekAbstractElement.h"
#include "client/terminal/Console.h"
#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/Schema.h"
#include "lab/notation/JsonOutput.h"

#include <cstdio>

namespace client {

using namespace lab;

namespace {

void printElement(const ElementRow &row)
{
    std::printf("%s: %s\n", row.name, row.summary);
    const std::unique_ptr<VekAbstractElement> element = row.make();
    for (const PropertyRow &property : row.properties)
        std::printf("  %-29s %-28s %s\n", property.name, qPrintable(valueText(property)),
                    qPrintable(defaultText(property, *element)));
}

} // namespace

ElementsCommand::ElementsCommand(CLI::App &parent)
    : Command(parent, "elements", "Show the elements of experiment files and their properties",
              "  nimbrelle elements\n"
              "  nimbrelle elements CyclicVoltammetry\n"
              "  nimbrelle elements --schema > experiment.schema.json")
{
    app().add_option("NAME", _name, "Only this element");
    app().add_flag("--schema", _wantsSchema, "Print the JSON schema of experiment files");
    app().add_flag("--markdown", _wantsMarkdown, "Print tables for the documentation");
}

int ElementsCommand::run()
{
    if (_wantsSchema) {
        printJson(experimentSchema());
        return Done;
    }
    if (_wantsMarkdown) {
        std::printf("%s", elementTables().toUtf8().constData());
        return Done;
    }
    if (_name.empty()) {
        for (const ElementRow &row : elementCatalogue())
            std::printf("%-30s %s\n", row.name, row.summary);
        return Done;
    }
    const QString name = QString::fromStdString(_name);
    if (const ElementRow *row = findElement(name)) {
        printElement(*row);
        return Done;
    }
    Console::instance().error(QStringLiteral("there is no element \"%1\"%2").arg(name, elementMeant(name)));
    return BadInput;
}

} // namespace client
