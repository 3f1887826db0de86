#include "jobs/control.h"

#include <exception>
#include <new>

namespace Jobs {

Ending runGuarded(const std::function<void()> &work)
{
    try {
        work();
        return {};
    } catch (const std::bad_alloc &) {
        // A literal takes no memory.
        return {Ending::Failed,
                QStringLiteral("There is not enough memory for this. Close other programs, or "
                               "choose fewer points.")};
    } catch (const std::exception &exception) {
        return {Ending::Failed, QString::fromLocal8Bit(exception.what())};
    }
}

} // namespace Jobs
