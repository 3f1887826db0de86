#pragma once

#include <QMetaType>
#include <QString>
#include <functional>

/// Work that takes longer than a blink: how it is started, watched, stopped and told to fail. What
/// is computed nobody here knows.
namespace Jobs {

/// What work may ask and tell while it runs. By default nobody listens and nobody stops it.
struct Control {
    /// Share that is done, 0 to 100, of this work.
    std::function<void(int percent)> progress = [](int) {};
    /// The work should end without a result. Asked every few milliseconds, from any thread.
    std::function<bool()> isStopped = [] { return false; };
    /// A sentence for the user that belongs to no result.
    std::function<void(const QString &text)> remark = [](const QString &) {};
};

/// How work ended.
struct Ending {
    enum Kind {
        Finished,
        Stopped, ///< on request; there is no result
        Failed   ///< by an exception; `problem` says which
    };
    Kind kind = Finished;
    QString problem; ///< for the user; empty unless Failed
};

/// Runs work that may throw; a lack of memory too becomes a failure with a text.
///
/// @return Finished or Failed
Ending runGuarded(const std::function<void()> &work);

} // namespace Jobs

Q_DECLARE_METATYPE(Jobs::Ending)
