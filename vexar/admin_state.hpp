// The State mutex S and the first-write flag, for the library's own code.
//
// S guards the logger's State sample: hold it across a change of a State
// field and the QTV_VX_Vexar_writeState that publishes the change, so the
// publication-matched callback, remote commands and the application never
// publish a half-made change. It is recursive: writeState and the other
// operations of vexar/AdminState.h take it themselves, also when the caller
// already holds it. Never wait for the global lock while holding it.
#pragma once

#include <mutex>

#include "vexar/DDSEntities.h"

namespace vexar {

[[nodiscard]] std::unique_lock<std::recursive_mutex> lockState() noexcept;

// QTV_VX_DDSEntities_gInitialStateSent, read and written atomically.
bool initialStateSent() noexcept;
void setInitialStateSent(bool sent) noexcept;

}  // namespace vexar
