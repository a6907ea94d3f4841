// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>

/**
 * The one object of a class: made on first use, deleted with the application object, so that its threads have ended
 * before the process does. A later application object gets a new one.
 *
 * @thread Any thread; the object lives on the one that asked first.
 */
template <class Object>
class ApplicationSingleton
{
public:
    static Object *instance()
    {
        const QMutexLocker locker(&_mutex);
        if (!_object) {
            _object = new Object;
            qAddPostRoutine(&ApplicationSingleton::destroy);
        }
        return _object;
    }

private:
    static void destroy()
    {
        delete _object;
        _object = nullptr;
    }

    inline static QMutex _mutex; // guards the making
    inline static Object *_object = nullptr;
};
