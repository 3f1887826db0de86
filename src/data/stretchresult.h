#pragma once

#include <QString>
#include <optional>
#include <utility>

enum class StretchEnd {
    Complete,
    Short,     ///< the file ends within the stretch; what is missing reads as 0
    Cancelled, ///< by a hook
    Refused,   ///< outside the recording, or more than the machine's memory
};

/// What was made by reading a part of a recording, and how the reading ended. The value is
/// reached only by naming the end that it may have had: nobody computes with the zeros of a file
/// that ends early without knowing of them.
template <typename Value>
class [[nodiscard]] StretchResult {
public:
    static StretchResult complete(Value value)
    {
        return {std::move(value), StretchEnd::Complete, {}};
    }
    static StretchResult endedEarly(Value value, const QString &reason)
    {
        return {std::move(value), StretchEnd::Short, reason};
    }
    /// @param end  anything but Complete
    static StretchResult none(StretchEnd end, const QString &reason)
    {
        return {std::nullopt, end, reason};
    }

    StretchEnd end() const { return howItEnded; }
    /// Which file, what is wrong, what can be done; empty when complete.
    const QString &reason() const { return why; }

    /// The value of a complete reading; null after every other.
    const Value *whole() const &
    {
        return howItEnded == StretchEnd::Complete ? &*content : nullptr;
    }
    /// The value even where the file ended within the stretch; null where nothing was read.
    const Value *asFarAsRead() const & { return content ? &*content : nullptr; }
    // They would outlive the result.
    const Value *whole() const && = delete;
    const Value *asFarAsRead() const && = delete;

private:
    StretchResult(std::optional<Value> value, StretchEnd end, const QString &reason)
        : content(std::move(value)), howItEnded(end), why(reason)
    {}

    std::optional<Value> content; // after Complete and Short
    StretchEnd howItEnded;
    QString why;
};
