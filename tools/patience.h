/// A line on the terminal while the controller makes the user wait.
#ifndef VEK_TOOLS_PATIENCE_H
#define VEK_TOOLS_PATIENCE_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Tool
{

/// What a wait says of itself; called on a thread of its own.
using WaitText = std::function<std::string()>;

/// From some time after its construction until its end, standard error says
/// what the program waits for. Says nothing when that is no terminal, nor
/// within another's lifetime.
class Patience
{
public:
    /// @param text asked again and again; without it one that never changes,
    ///     for a single exchange.
    explicit Patience(WaitText text = {});
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

private:
    void watch();

    WaitText text_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool over_ = false;
    std::thread thread_;
};

} // namespace Tool

#endif
