#pragma once

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrentRun>

/// Does work that takes its time on a thread of the pool, then calls `done` with what it returned,
/// on the thread of the context; when the context has gone meanwhile, nothing is called. The work
/// holds copies of all it needs: it goes on without the context.
template <typename Work, typename Done>
void work_in_background(QThreadPool& threads, QObject& context, Work work, Done done) {
    auto* watcher = new QFutureWatcher<decltype(work())>(&context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, &context, [watcher, done] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(&threads, work));
}
