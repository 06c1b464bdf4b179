#include "sim/device/real.h"

namespace Sim
{

int realClose(int descriptor)
{
    static const auto next = nextDefinition<int(int)>("close");
    return next(descriptor);
}

} // namespace Sim
