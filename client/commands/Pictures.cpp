// SPDX-License-Identifier: MIT
#include "client/commands/Pictures.h"

#include "client/terminal/Console.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QPluginLoader>

namespace client {

namespace {

constexpr const char *fileName = "nimbrelle-plots.so";

/// Where the module may be, by the program's own place: beside it in a build tree, among the libraries elsewhere.
QStringList moduleFolders()
{
    const QString program = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    if (program.isEmpty())
        return {};
    const QDir folder = QFileInfo(program).dir();
    return {folder.path(), QDir::cleanPath(folder.filePath(QStringLiteral(NIMBRELLE_MODULES)))};
}

/// Its path, or empty.
QString moduleFile(const QStringList &folders)
{
    for (const QString &folder : folders) {
        const QString path = QDir(folder).filePath(QLatin1String(fileName));
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

/// A module of another version is not loaded at all: nothing of it would be where this program looks for it.
plots::PlotModule *load(QPluginLoader &loader)
{
    const QString version = loader.metaData().value(QStringLiteral("IID")).toString();
    if (!version.isEmpty() && version != QLatin1String(NIMBRELLE_PLOT_MODULE)) {
        Console::instance().error(QStringLiteral("pictures cannot be drawn: %1 is %2, and this program needs %3")
                                      .arg(loader.fileName(), version, QLatin1String(NIMBRELLE_PLOT_MODULE)));
        return nullptr;
    }
    auto *const module = qobject_cast<plots::PlotModule *>(loader.instance());
    if (!module)
        Console::instance().error(
            QStringLiteral("pictures cannot be drawn: %1").arg(loader.errorString().simplified()));
    return module;
}

} // namespace

plots::PlotModule *plotModule()
{
    static plots::PlotModule *module = nullptr;
    if (module)
        return module;
    const QStringList folders = moduleFolders();
    const QString path = moduleFile(folders);
    if (path.isEmpty()) {
        Console::instance().error(
            QStringLiteral("pictures cannot be drawn: there is no %1 in %2; all else works without it")
                .arg(QLatin1String(fileName), folders.join(QLatin1String(" or "))));
        return nullptr;
    }
    QPluginLoader loader(path);
    // All of it now rather than at the end of a run, and never out again: Qt's own ends come after the program's.
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    module = load(loader);
    return module;
}

bool drawPictures(const QString &folder)
{
    plots::PlotModule *const module = plotModule();
    if (!module)
        return false;
    const plots::Drawing drawing = module->drawRun(folder);
    for (const QString &note : drawing.notes)
        Console::instance().note(note);
    return drawing.isDone;
}

} // namespace client
