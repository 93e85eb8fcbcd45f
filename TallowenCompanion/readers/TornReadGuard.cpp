#include "readers/TornReadGuard.hpp"

#include <csignal>
#include <cstdint>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

namespace tallowen {
namespace {

thread_local uintptr_t guardedStart = 0;
thread_local uintptr_t guardedEnd = 0;
thread_local volatile sig_atomic_t guardedReadTorn = 0;

uintptr_t pageSize = 4096;
struct sigaction previousBusErrorAction {};
std::once_flag handlerInstalled;

void onBusError(int signalNumber, siginfo_t* info, void* context) {
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    if (guardedStart != 0 && address >= guardedStart && address < guardedEnd) {
        const uintptr_t firstLostPage = address & ~(pageSize - 1);
        void* replaced = ::mmap(reinterpret_cast<void*>(firstLostPage), guardedEnd - firstLostPage, PROT_READ,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        if (replaced != MAP_FAILED) {
            guardedReadTorn = 1;
            return;  // the faulting read runs again and now sees zeros
        }
    }
    // Not a guarded read: hand the fault to whoever had it before.
    if (previousBusErrorAction.sa_flags & SA_SIGINFO) {
        if (previousBusErrorAction.sa_sigaction != nullptr) {
            previousBusErrorAction.sa_sigaction(signalNumber, info, context);
            return;
        }
    } else if (previousBusErrorAction.sa_handler != SIG_DFL && previousBusErrorAction.sa_handler != SIG_IGN &&
               previousBusErrorAction.sa_handler != nullptr) {
        previousBusErrorAction.sa_handler(signalNumber);
        return;
    }
    ::signal(SIGBUS, SIG_DFL);  // the fault repeats and ends the process as usual
}

void installHandler() {
    pageSize = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    struct sigaction action {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGBUS, &action, &previousBusErrorAction);
}

}  // namespace

TornReadGuard::TornReadGuard(const void* start, size_t length) {
    std::call_once(handlerInstalled, installHandler);
    guardedReadTorn = 0;
    guardedStart = reinterpret_cast<uintptr_t>(start);
    guardedEnd = guardedStart + length;
}

TornReadGuard::~TornReadGuard() {
    guardedStart = 0;
    guardedEnd = 0;
}

bool TornReadGuard::torn() const { return guardedReadTorn != 0; }

}  // namespace tallowen
