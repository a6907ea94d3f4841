// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

/**
 * The links and sockets that this process makes in the file system: it replaces nothing of anybody else's, takes away what
 * it has made itself, and leaves alone what has come in its place meanwhile.
 *
 * All functions may be called from any thread.
 */
namespace OwnPaths {

enum class Kind {
    Link,   ///< a symbolic link to a pseudo-terminal
    Socket, ///< of packets, in the local domain
};

/**
 * What is in the way of making something at a path.
 *
 * What a simulator that was killed has left there is not: a link to a pseudo-terminal that is no more, or a socket that
 * nobody listens on.
 *
 * @return an empty text if nothing is, else the reason
 */
QString obstacleAt(const QString &path, Kind kind);
/// Takes away what a killed simulator has left. @return what is in the way still, or an empty text
QString clear(const QString &path, Kind kind);

/**
 * Makes something at a path and remembers that it is its own.
 *
 * @param maker makes it, unless there is something already: true when it is there, else false with errno
 * @return an empty text, or the reason why it is not there
 */
QString make(const QString &path, const std::function<bool()> &maker);
/// Takes away what has been made at a path, if that is what stands there still.
void remove(const QString &path);
/// Takes away all that has been made; from now on nothing can be made. For a process that is about to end.
void removeAll();

} // namespace OwnPaths
