#pragma once

namespace kessil {

class CIPCCommunication;

/// Marshals one call of the target `function`, from the in-list in the section to the reply on the pipe. An exception
/// of the target passes through.
using Handler = void (*)(CIPCCommunication &channel, void *function);

} // namespace kessil
