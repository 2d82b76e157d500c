// What the two halves of the preload host share: the SIGILL emulation
// (preload.cpp) and the application's own signal handlers (app_signals.cpp).
#pragma once

#include <signal.h>

struct cpu_state;

// The calling thread's emulated register file, or null while the thread has
// executed no SVE instruction.
cpu_state* preload_thread_state();

// The C library's sigaction, which our own sigaction stands in front of.
int preload_real_sigaction(int sig, const struct sigaction* act, struct sigaction* old);

// Hands a SIGILL that is not ours to emulate to the application's own SIGILL
// handler, as the processor would have. False when the application has none
// (default or ignored): then the caller lets the default action end it.
bool preload_deliver_app_sigill(int sig, siginfo_t* info, void* context);

// Puts our SIGILL handler in the kernel; the action that was there becomes the
// application's recorded SIGILL action.
void preload_take_sigill(const struct sigaction& ours);

// Gives SIGILL its default action in the kernel, so that the instruction,
// run again, ends the program.
void preload_default_sigill();
