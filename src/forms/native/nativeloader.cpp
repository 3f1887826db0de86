#include "forms/native/nativeloader.h"

NativeLoader::NativeLoader(Jobs::Worker &jobs, const RecordingFile &recording, QObject *parent)
    : QObject(parent), worker(jobs), file(recording)
{}

void NativeLoader::request(NativeRequest wanted)
{
    newest = std::move(wanted);
    newest.path = file.path();
    wasStopped = false;
    problem.clear();
    load(newest);
}

NativeDomain NativeLoader::domainFor(const NativeRange &part) const
{
    const int npoints = file.completePoints();
    const NativeDomain none = {0, npoints, false};
    return wantedDomain(npoints, mostDetailedPoints(file), part.first, part.points,
                        newest.domain.count > 0 ? newest.domain : none);
}

bool NativeLoader::isAsked(const NativeDomain &domain) const
{
    return domain.first == asked().first && domain.count == asked().count;
}

void NativeLoader::load(const NativeRequest &wanted)
{
    const auto work = [wanted](const Jobs::Control &control,
                               const Jobs::Deliver<Picture> &deliver) {
        loadNative(
            wanted, [&control] { return !control.isStopped(); },
            [&](const Picture &made) {
                if (!made->isLast)
                    control.progress(int(100 * made->share));
                deliver(made);
            });
    };
    worker.start<Picture>(work, [this](const Picture &delivered) { take(delivered); });
}

void NativeLoader::take(const Picture &delivered)
{
    const NativeDomain &domain = delivered->request.domain;
    if (delivered->request.isRepeated && !delivered->isLast)
        return;
    if (domain.first == 0 && domain.count == file.completePoints()) {
        all = delivered;
        emit wholeRead();
    }
    const NativeDomain before = asked();
    if (!isAsked(domain) || domain.detailed != asked().detailed)
        return;
    current = delivered;
    emit pictureRead();
    const bool isStillWanted = isAsked(before); // what is seen may have asked for another part
    if (!delivered->isLast || !isStillWanted || (all && !all->isGlance))
        return;
    NativeRequest glance = newest;
    glance.domain = {0, file.completePoints(), false};
    glance.isRepeated = false;
    load(glance);
}

void NativeLoader::end(const Jobs::Ending &ending)
{
    wasStopped = ending.kind != Jobs::Ending::Finished;
    if (ending.kind == Jobs::Ending::Failed)
        problem = ending.problem;
}
