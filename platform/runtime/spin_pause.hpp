// One step of a spin-wait: tells the processor the loop is waiting, which
// saves power and lets a sibling hardware thread run.
#pragma once

namespace vexar::runtime {

inline void spinPause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

}  // namespace vexar::runtime
