// IANA enterprise numbers of controller makers. The texts are compared by
// callers: they stay as they are.
#include "ipmi/IpmiIdentity.h"

namespace Ipmi
{

namespace
{

constexpr struct
{
    uint32_t number;
    const char* name;
} manufacturers[] = {
    {0, "Unknown"},
    {2, "IBM"},
    {9, "Cisco Systems"},
    {11, "Hewlett-Packard"},
    {42, "Sun Microsystems"},
    {63, "Apple"},
    {94, "Nokia"},
    {116, "Hitachi, Ltd."},
    {119, "NEC Corporation"},
    {186, "Toshiba Corporation"},
    {343, "Intel Corporation"},
    {373, "Tatung Co., Ltd."},
    {399, "Hitachi Computer Products (America), Inc."},
    {674, "Dell Inc."},
    {1372, "LSI Logic"},
    {2168, "LMC Lan Management Consulting GmbH"},
    {4337, "RadiSys Corp."},
    {4413, "Broadcom Corporation"},
    {5593, "Magnum Technologies Inc."},
    {6653, "Tyan Computer Corporation"},
    {9237, "Newisys"},
    {10368, "Fujitsu Siemens Computers"},
    {10418, "Avocent Corporation"},
    {10437, "Peppercon AG"},
    {10876, "Super Micro Computer Inc."},
    {11102, "OSA Technologies Inc."},
    {12634, "PICMG"},
    {13742, "Raritan Computer, Inc."},
    {15000, "Kontron Canada Inc."},
    {19046, "Lenovo Group"},
    {20974, "American Megatrends, Inc"},
};

} // namespace

void fillManufacturerNames(ManufacturerNames& names)
{
    for (const auto& row : manufacturers)
        names.emplace(IPMI_OEM(row.number), row.name);
}

} // namespace Ipmi
