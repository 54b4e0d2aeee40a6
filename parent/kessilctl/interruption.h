#pragma once

#include "kessil/parent.h"

namespace kessil::driver {

/// While it lives, Ctrl-C (and a request to terminate) cancels what the helper is doing; a second one ends the process
/// at once. One at a time.
class Interruption
{
public:
    explicit Interruption(parent::Helper &helper);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool Requested() const;

private:
    using Action = void (*)(int);
    Action m_before_interrupt;
    Action m_before_terminate;
};

} // namespace kessil::driver
