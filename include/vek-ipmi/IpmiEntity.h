/// A part of the platform, as the controller names it: an entity id and an
/// instance of it (IPMI v2.0, section 39 and table 43-13).
#ifndef VEK_IPMI_IPMIENTITY_H
#define VEK_IPMI_IPMIENTITY_H

#include <string>
#include <vector>

namespace Ipmi
{

/// A plain value. All zeros means "no entity".
class IpmiEntity
{
public:
    IpmiEntity() = default;
    /// Keeps the low seven bits of the instance.
    IpmiEntity(unsigned id, unsigned instance, unsigned reserved, int node)
        : id_{id}, instance_{instance & 0x7f}, reserved_{reserved}, node_{node}
    {}

    unsigned getId() const { return id_; }
    unsigned getInstance() const { return instance_; }
    unsigned getReserved() const { return reserved_; }
    int getNode() const { return node_; }

    /// What kind of part this is, as "Power Supply".
    std::string getName() const { return getName(id_); }
    static std::string getName(unsigned id);

    /// The CIM class of the alert indications about this part.
    std::string getAlertClassName() const;

    /// As IpmiIfc::getEntityParent.
    IpmiEntity getParent() const;

private:
    struct Mapping
    {
        const char* name;
        const char* alertClassName;
    };
    static const Mapping _mapping[];

    unsigned id_ = 0;
    unsigned instance_ = 0;
    unsigned reserved_ = 0;
    int node_ = 0;
};

/// A top-level entity and what it contains, as IpmiIfc::getEntities orders it.
struct IpmiContainer
{
    IpmiEntity entity;
    std::vector<IpmiEntity> contents;
};

} // namespace Ipmi

#endif
