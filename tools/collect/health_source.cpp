#include "tools/collect/health_source.h"

#include <sstream>
#include <string>

#include <vek-ipmi/IpmiCommandLine.h>

#include "tools/collect/health_table.h"

namespace Tool
{

HealthSource loadHealthTable()
{
    // A table stays what it was once loaded, whoever did it.
    static const HealthSource source = [] {
        Ipmi::LoadSensorHealthDataFile();
        std::istringstream nothing;
        if (Ipmi::LoadSensorHealthData(nothing))
            return HealthSource::file;
        std::istringstream packaged{std::string{packagedHealthTable()}};
        Ipmi::LoadSensorHealthData(packaged);
        return HealthSource::packaged;
    }();
    return source;
}

} // namespace Tool
