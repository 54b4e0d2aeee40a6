#include "kessilctl/console/console.h"

#include "kessilctl/console/progress.h"

namespace kessil::kessilctl {

void Console::WriteLine(const std::string &line)
{
    if (m_progress)
        m_progress->ClearBar();
    err << line << '\n';
}

} // namespace kessil::kessilctl
