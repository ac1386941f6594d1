#pragma once

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrentRun>

/// Does work that may take long on a thread of the pool, then calls `done` with its result on the
/// context's thread, unless the context was destroyed meanwhile. The work must own copies of all
/// that it needs, for it may outlive the context.
template <typename Work, typename Done>
void work_in_background(QThreadPool& threads, QObject& context, Work work, Done done) {
    auto* watcher = new QFutureWatcher<decltype(work())>(&context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, &context, [watcher, done] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(&threads, work));
}
