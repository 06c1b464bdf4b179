// The steps of a capture that ask a fixed list of questions.
#include <iterator>

#include "tools/collect/capture_query.h"

namespace Tool
{

namespace
{

constexpr Command identityQuestions[] = {
    commands::getDeviceId, commands::getSelfTestResults,
    {0x06, 0x07}, // Get ACPI Power State
    {0x06, 0x08}, // Get Device GUID
    {0x06, 0x37}, // Get System GUID
};

constexpr Command systemQuestions[] = {
    {0x06, 0x2F}, // Get BMC Global Enables
    {0x00, 0x00}, // Get Chassis Capabilities
    {0x00, 0x01}, // Get Chassis Status
};

constexpr Command getChannelInfo = {0x06, 0x42};
constexpr uint8_t channels = 16;

// A text comes in blocks of 16 bytes; the first one begins with its encoding
// and its length (IPMI v2.0, 22.14b).
void keepText(CaptureQuery& query, CapturedAnswers& answers, uint8_t parameter)
{
    constexpr size_t lengthAt = 4, blockSize = 16;
    size_t blocks = 1;
    for (size_t block = 0; block < blocks; ++block) {
        answers.push_back(query.keep(commands::getSystemInfo,
                                     {0, parameter, uint8_t(block), 0}));
        const CapturedAnswer& kept = answers.back();
        if (!kept.ok())
            return;
        if (block == 0 && kept.answer.size() > lengthAt)
            blocks = (kept.answer[lengthAt] + 2u + blockSize - 1) / blockSize;
    }
}

// IPMI v2.0, table 23-4, without what only alerts use.
constexpr uint8_t parameters[] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 20,
    21, 22, 23, 24, 26, 50, 51, 55, 64, 65, 66, 67, 68, 69, 70, 71, 72, 73};

/// A parameter of which there are several, and where it says how many.
struct Selected
{
    uint8_t parameter, counts;
    size_t countAt; ///< In that one's data.
};

// Addresses, static and dynamic, and dynamic routers with what is known of
// them.
constexpr Selected selectedParameters[] = {{56, 55, 0}, {59, 55, 1},
                                           {74, 73, 0}, {75, 73, 0},
                                           {76, 73, 0}, {77, 73, 0}};

class LanQuestions
{
public:
    LanQuestions(CaptureQuery& query, uint8_t channel) : query_{query}
    {
        lan_.channel = channel;
    }

    void ask(uint8_t parameter, uint8_t selector)
    {
        constexpr Command getParameter = {0x0C, 0x02};
        constexpr uint8_t notSupported = 0x80, revision = 0x11;
        CapturedAnswer kept =
            query_.keep(getParameter, {lan_.channel, parameter, selector, 0});
        query_.progress().step();
        Bytes& answer = kept.answer;
        if (kept.ok() && answer.size() >= 2 && answer[1] == revision)
            lan_.parameters.push_back(
                {parameter, selector, {answer.begin() + 2, answer.end()}});
        else if (answer.empty() || answer[0] != notSupported)
            query_.capture().controller.answers.push_back(std::move(kept));
    }

    size_t count(const Selected& row) const
    {
        for (const CapturedParameter& one : lan_.parameters)
            if (one.number == row.counts && one.data.size() > row.countAt)
                return one.data[row.countAt];
        return 0;
    }

    CapturedLan take() { return std::move(lan_); }

private:
    CaptureQuery& query_;
    CapturedLan lan_;
};

CapturedLan lanOf(CaptureQuery& query, uint8_t channel)
{
    query.progress().enter("LAN parameters", std::size(parameters));
    LanQuestions questions{query, channel};
    for (const uint8_t parameter : parameters)
        questions.ask(parameter, 0);
    query.progress().enter("LAN addresses");
    for (const Selected& row : selectedParameters)
        for (size_t i = 0; i < questions.count(row); ++i)
            questions.ask(row.parameter, uint8_t(i));
    return questions.take();
}

} // namespace

void captureIdentity(CaptureQuery& query, CapturedController& controller)
{
    for (const Command& question : identityQuestions) {
        controller.answers.push_back(
            query.keep(question, {}, controller.target));
        // Nobody is there: each further question would be waited for.
        if (!isThere(controller))
            return;
    }
}

void captureSystem(CaptureQuery& query)
{
    constexpr uint8_t firstText = 1, lastText = 7;
    query.progress().enter("the system's information");
    CapturedAnswers& answers = query.capture().controller.answers;
    for (const Command& question : systemQuestions)
        answers.push_back(query.keep(question, {}));
    for (uint8_t text = firstText; text <= lastText; ++text)
        keepText(query, answers, text);
    for (uint8_t channel = 0; channel < channels; ++channel)
        answers.push_back(query.keep(getChannelInfo, {channel}));
}

void captureLan(CaptureQuery& query)
{
    constexpr uint8_t lanMedium = 0x04, mediumMask = 0x7F;
    constexpr size_t mediumAt = 2;
    Bytes found;
    for (const CapturedAnswer& kept : query.capture().controller.answers)
        if (kept.command.netFn == getChannelInfo.netFn &&
            kept.command.code == getChannelInfo.code && kept.ok() &&
            kept.answer.size() > mediumAt &&
            (kept.answer[mediumAt] & mediumMask) == lanMedium)
            found.push_back(kept.request[0]);
    for (const uint8_t channel : found)
        query.capture().lan.push_back(lanOf(query, channel));
}

} // namespace Tool
