// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QThread>

/// The first line of a function that is bound to its object's thread. It looks in debug builds alone.
inline void assertOnThreadOf([[maybe_unused]] const QObject &object)
{
    Q_ASSERT_X(object.thread() == QThread::currentThread(), object.metaObject()->className(),
               "called on another thread than the object's");
}
