// SPDX-License-Identifier: MIT
#include "logging/Logger.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString defaultLogFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
           QStringLiteral("/Brenmoor Apparatus/API") + QStringLiteral("/NimbrelleAPI.log");
}

/// What would break the line, or turn the direction of writing in whatever shows the file.
bool isLayout(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString inOneLine(QString message)
{
    for (QChar &character : message) {
        if (isLayout(character))
            character = QLatin1Char(' ');
    }
    return message;
}

} // namespace

Logger &Logger::getInstance()
{
    static Logger logger;
    return logger;
}

Logger::Logger()
{
    _stream.setCodec("UTF-8");
    setLogFilePath(defaultLogFilePath());
}

void Logger::setLogFilePath(const QString &path)
{
    closeLogFile();
    _file.setFileName(path);
    openLogFile();
}

void Logger::setSaveLogToFile(bool save)
{
    const QWriteLocker locker(&_lock);
    _saveToFile = save;
}

void Logger::logInformation(const QString &message)
{
    log(QStringLiteral("INFO"), message);
}

void Logger::logWarning(const QString &message)
{
    log(QStringLiteral("WARNING"), message);
}

void Logger::logCritical(const QString &message)
{
    log(QStringLiteral("CRITICAL"), message);
}

void Logger::logFatal(const QString &message)
{
    log(QStringLiteral("FATAL"), message);
}

void Logger::log(const QString &level, const QString &message)
{
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    const QString line = QStringLiteral("[%1] %2 - %3").arg(now, level, inOneLine(message));
    const QWriteLocker locker(&_lock);
    if (_saveToFile)
        logToFile(line);
}

void Logger::logToFile(const QString &line)
{
    if (_stream.device() == nullptr)
        openLogFile();
    if (_stream.device() == nullptr)
        return;
    _stream.resetStatus(); // after one failure it would stay silent, though the disk may have room again
    _stream << line << "\n";
    _stream.flush();
}

void Logger::openLogFile()
{
    const QString folder = QFileInfo(_file).absolutePath();
    if (!QDir().exists(folder) && !QDir().mkpath(folder)) {
        qWarning().noquote() << QStringLiteral("Failed to create api log directory: ") + folder;
        return;
    }
    if (_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        _stream.setDevice(&_file);
}

void Logger::closeLogFile()
{
    _stream.setDevice(nullptr);
    _file.close();
}
