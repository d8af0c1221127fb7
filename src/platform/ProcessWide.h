#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace vardel {

// Process-wide state that lives for the whole process but that tests can put back to its start.
// Every holder registers itself; resetAll() resets them all.
class ProcessWideState {
public:
    static void resetAll();

protected:
    ProcessWideState();
    ~ProcessWideState();
    ProcessWideState(const ProcessWideState&) = delete;
    ProcessWideState& operator=(const ProcessWideState&) = delete;

    virtual void reset() = 0;
};

// A value computed once per process on first use (thread-safe), such as a preference read once.
template<typename T> class ProcessWide final : public ProcessWideState {
public:
    explicit ProcessWide(std::function<T()> make)
        : make_(std::move(make))
    {
    }

    T& get()
    {
        std::lock_guard lock(mutex_);
        if (!value_)
            value_.emplace(make_());
        return *value_;
    }

private:
    void reset() override
    {
        std::lock_guard lock(mutex_);
        value_.reset();
    }

    std::function<T()> make_;
    std::mutex mutex_;
    std::optional<T> value_;
};

// Mutable process-wide state (statistics, flags) that starts from a default-constructed value.
template<typename T> class ProcessWideVariable final : public ProcessWideState {
public:
    T& get() { return value_; }

private:
    void reset() override { value_ = T {}; }

    T value_ {};
};

} // namespace vardel
