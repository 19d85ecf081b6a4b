// The storage of thread-locals that every logging call touches.
//
// In the shared library a thread-local is otherwise reached through a call
// into the dynamic linker (__tls_get_addr), several times per logging call.
// The initial-exec model reaches it with one load, at the price of room in
// the static TLS block, which a library loaded with dlopen takes from a
// small reserve; so only these few bytes use it.
#pragma once

#define VEXAR_HOT_THREAD_LOCAL thread_local __attribute__((tls_model("initial-exec")))
