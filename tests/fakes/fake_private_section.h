#pragma once

/// Replaces platform/private_section.h: private sections are kept with the others in `fake_section`, whose codes decide
/// how their creation ends. A program that lists this fake lists that one, too.
#include "fakes/fake_section.h"
