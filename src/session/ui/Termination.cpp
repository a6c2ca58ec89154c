#include "session/ui/Termination.h"

#include "session/ui/frmCodeLib.h"

#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace qb {

namespace {

int TerminationPipe[2] = {-1, -1};

void NoteTermination(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(TerminationPipe[1], &byte, 1);
}

} // namespace

void KeepTextsAtTermination(frmCodeLib& window)
{
    if (::pipe2(TerminationPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* notifier = new QSocketNotifier(TerminationPipe[0], QSocketNotifier::Read, &window);
    QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window] {
        window.KeepUnsavedTexts();
        std::signal(SIGTERM, SIG_DFL);
        std::raise(SIGTERM);
    });
    std::signal(SIGTERM, NoteTermination);
}

} // namespace qb
