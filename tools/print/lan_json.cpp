#include "tools/print/lan.h"
#include "tools/print/lan_words.h"

namespace Tool
{

namespace
{

// Of a value that is there; null for another.
template <typename Make>
Json jsonOf(const LanInterface& one, lan::Parameter parameter, Make make)
{
    const Bytes* value = one.find(parameter);
    return value ? Json(make(*value)) : Json(nullptr);
}

Json codeJson(uint8_t code, std::string (*name)(uint8_t))
{
    return {{"code", code}, {"name", name(code)}};
}

template <std::string (*name)(uint8_t)>
Json code(const Bytes& value)
{
    return codeJson(value[0], name);
}

template <std::vector<std::string> (*names)(uint8_t), size_t at = 0>
Json bits(const Bytes& value)
{
    return names(value[at]);
}

Json sourceJson(const Bytes& value)
{
    constexpr uint8_t fourBits = 0x0F;
    return codeJson(value[0] & fourBits, sourceName);
}

Json ipv4Json(const LanInterface& one)
{
    return {{"address", jsonOf(one, lan::address, ipv4Text)},
            {"source", jsonOf(one, lan::addressSource, sourceJson)},
            {"netmask", jsonOf(one, lan::netmask, ipv4Text)},
            {"gateway", jsonOf(one, lan::gateway, ipv4Text)},
            {"gatewayMac", jsonOf(one, lan::gatewayMac, macText)},
            {"backupGateway", jsonOf(one, lan::backupGateway, ipv4Text)},
            {"backupGatewayMac", jsonOf(one, lan::backupGatewayMac, macText)}};
}

Json vlanJson(const LanInterface& one)
{
    return jsonOf(one, lan::vlanId, [&](const Bytes& value) {
        const Vlan vlan = vlanOf(value);
        return Json{
            {"enabled", vlan.isEnabled},
            {"id", vlan.id},
            {"priority", jsonOf(one, lan::vlanPriority, vlanPriorityOf)}};
    });
}

Json toJson(const LanAddress& address)
{
    return {{"kind", address.isDynamic ? "dynamic" : "static"},
            {"index", address.index},
            {"address", ipv6Text(address.address)},
            {"prefixLength", address.prefixLength},
            {"source",
             {{"code", address.source}, {"name", ipv6SourceName(address)}}},
            {"enabled",
             address.isDynamic ? Json(nullptr) : Json(address.isEnabled)},
            {"status", codeJson(address.status, ipv6StatusName)}};
}

Json toJson(const LanRouter& router)
{
    Json json;
    json["kind"] = router.isDynamic ? "dynamic" : "static";
    json["index"] = router.index;
    json["address"] = ipv6Text(router.address);
    json["mac"] =
        router.mac.empty() ? Json(nullptr) : Json(macText(router.mac));
    json["prefix"] =
        router.prefix.empty() ? Json(nullptr) : Json(ipv6Text(router.prefix));
    json["prefixLength"] =
        router.prefixLength ? Json(*router.prefixLength) : Json(nullptr);
    return json;
}

Json toJson(const LanGap& gap)
{
    Json completion = toJson(gap.command, gap.completion);
    if (gap.isOfAnother)
        completion["words"] = whyGap(gap);
    return {{"what", gap.what()}, {"completion", std::move(completion)}};
}

Json toJson(const LanInterface& one);

template <typename Value>
Json listJson(const std::vector<Value>& values)
{
    Json json = Json::array();
    for (const Value& value : values)
        json.push_back(toJson(value));
    return json;
}

Json ipv6Json(const LanInterface& one)
{
    constexpr size_t dynamicAt = 2; // of the status
    Json json;
    json["support"] = jsonOf(one, lan::ipv6Support, bits<ipv6SupportNames>);
    json["enables"] = jsonOf(one, lan::ipv6Enables, code<ipv6EnablesName>);
    json["dynamicSupport"] =
        jsonOf(one, lan::ipv6Status, bits<dynamicSupportNames, dynamicAt>);
    json["addresses"] = listJson(one.addresses);
    json["routersFrom"] =
        jsonOf(one, lan::ipv6RouterControl, bits<routerControlNames>);
    json["routers"] = listJson(one.routers);
    return json;
}

Json toJson(const LanInterface& one)
{
    Json json;
    json["channel"] = one.channel;
    json["medium"] =
        one.medium ? codeJson(*one.medium, mediumName) : Json(nullptr);
    json["mac"] = jsonOf(one, lan::mac, macText);
    json["ipv4"] = ipv4Json(one);
    json["vlan"] = vlanJson(one);
    json["ipv6"] = ipv6Json(one);
    json["failures"] = listJson(one.gaps);
    return json;
}

} // namespace

Json toJson(const Lan& lan)
{
    Json json = document("lan");
    json["interfaces"] = listJson(lan.interfaces);
    json["failures"] = listJson(lan.gaps());
    return json;
}

} // namespace Tool
