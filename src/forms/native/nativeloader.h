#pragma once

#include "data/recordingfile.h"
#include "forms/native/nativecurves.h"
#include "jobs/worker.h"

#include <QObject>

/// Reads what the viewer shows of a recording, beside the window: the newest request first, and a
/// glance at the whole recording once nothing else is to be read.
class NativeLoader : public QObject {
    Q_OBJECT

public:
    /// @param jobs       reads; nobody else uses it. It outlives the loader, as the recording does
    /// @param recording  is open
    NativeLoader(Jobs::Worker &jobs, const RecordingFile &recording, QObject *parent = nullptr);

    using Picture = std::shared_ptr<const NativePicture>;

    /// Reads a part. The same part again, for another sum, replaces what there is only once it is
    /// complete.
    ///
    /// @param wanted  its path does not matter
    void request(NativeRequest wanted);
    /// The part that the newest request named.
    const NativeDomain &asked() const { return newest.domain; }
    /// The part to read for what is in sight.
    NativeDomain domainFor(const NativeRange &part) const;
    bool isAsked(const NativeDomain &domain) const;

    /// What was read of the part so far; null before.
    const Picture &picture() const { return current; }
    /// The whole recording, maybe at a glance; null before.
    const Picture &whole() const { return all; }
    /// It is of another ray now.
    void forgetWhole() { all.reset(); }

    /// The worker's job has ended.
    void end(const Jobs::Ending &ending);
    /// The user has stopped the newest request.
    bool isStopped() const { return wasStopped; }
    /// Why the newest request failed; empty where it did not.
    const QString &failure() const { return problem; }

signals:
    /// There is another picture of the part.
    void pictureRead();
    void wholeRead();

private:
    void load(const NativeRequest &wanted);
    void take(const Picture &delivered);

    Jobs::Worker &worker;
    const RecordingFile &file;
    NativeRequest newest;
    Picture current;
    Picture all;
    bool wasStopped = false;
    QString problem;
};
