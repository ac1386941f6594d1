#pragma once

#include <QThread>
#include <functional>
#include <utility>

/// A look, or other work, that takes its time, in a thread of its own. Each start() does it once;
/// finished() is then sent. What the look writes is read by nobody else meanwhile.
class BackgroundLook : public QThread {
public:
    explicit BackgroundLook(std::function<void()> look_once) : look(std::move(look_once)) {}
    /// Waits for a look that is under way.
    ~BackgroundLook() override {
        wait();
    }

protected:
    void run() override {
        look();
    }

private:
    const std::function<void()> look;
};
