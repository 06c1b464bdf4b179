/// A line on the terminal while the controller makes the user wait.
#ifndef VEK_TOOLS_PATIENCE_H
#define VEK_TOOLS_PATIENCE_H

#include <condition_variable>
#include <mutex>
#include <thread>

namespace Tool
{

/// From one second after its construction until its end, standard error says
/// that the program waits. Says nothing when that is no terminal.
class Patience
{
public:
    Patience();
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

private:
    void watch();

    std::mutex mutex_;
    std::condition_variable wake_;
    bool over_ = false;
    std::thread thread_;
};

} // namespace Tool

#endif
