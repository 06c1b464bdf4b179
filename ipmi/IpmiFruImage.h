/// Taking a FRU device apart, whatever its bytes come from.
#ifndef VEK_IPMI_PRIVATE_IPMIFRUIMAGE_H
#define VEK_IPMI_PRIVATE_IPMIFRUIMAGE_H

#include <vek-ipmi/IpmiFruImage.h>

namespace Ipmi
{

/// Where an image's bytes come from.
class FruSource
{
public:
    FruSource() = default;
    virtual ~FruSource() = default;
    FruSource(const FruSource&) = delete;
    FruSource& operator=(const FruSource&) = delete;

    virtual unsigned size() const = 0;
    /// As IpmiIfcReadFru: `count` then says how many bytes were stored.
    virtual int read(unsigned offset, unsigned& count, uint8_t* out) = 0;
};

void decodeFru(FruSource& source, IpmiFruContents& contents);

} // namespace Ipmi

#endif
