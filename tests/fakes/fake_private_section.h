#pragma once

/// In the place of platform/private_section.h: a private section lies with the others in `fake_section`, whose codes
/// say how its creation ends. A program that lists this fake lists that one, too.
#include "fakes/fake_section.h"
