// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"

#include "logging/Logger.h"
#include "support/TestMain.h"

#include <cstdio>
#include <cstdlib>

namespace {

const IsolatedHome &home()
{
    static const IsolatedHome home;
    return home;
}

void keepQuiet(QtMsgType, const QMessageLogContext &, const QString &)
{
}

} // namespace

void mustHold(bool holds, const char *promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

bool isSameNumber(double one, double other)
{
    return one == other || (one != one && other != other);
}

FuzzProcess::FuzzProcess()
{
    home();
    qputenv("QT_NO_GLIB", "1"); // an event loop of Qt's own begins and ends faster, and targets begin many
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    new QCoreApplication(argumentCount, arguments);
    qInstallMessageHandler(keepQuiet);
    Logger::getInstance().setSaveLogToFile(false);
}

FuzzProcess::~FuzzProcess()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // links go by deleteLater()
    delete QCoreApplication::instance();
}

const FuzzProcess &FuzzProcess::instance()
{
    static const FuzzProcess process;
    return process;
}

QString FuzzProcess::documents() const
{
    return home().documents();
}
