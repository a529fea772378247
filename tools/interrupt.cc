#include "tools/interrupt.h"

#include <csignal>
#include <initializer_list>

#include "files/words/user_error.h"

namespace geomath_files::program {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void Note(int) { interrupted = 1; }

}  // namespace

void CatchInterrupts() {
  for (const int signal : {SIGINT, SIGTERM}) {
#ifdef _WIN32
    std::signal(signal, Note);
#else
    struct sigaction action = {};
    action.sa_handler = Note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // no SA_RESTART: reading that waits ends
    sigaction(signal, &action, nullptr);
#endif
  }
}

bool Interrupted() { return interrupted != 0; }

void StopIfInterrupted(const std::string& output) {
  if (Interrupted()) throw UserError("interrupted; " + output + " is not written");
}

}  // namespace geomath_files::program
