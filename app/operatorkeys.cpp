#include "app/operatorkeys.h"

#include <array>

namespace {

constexpr std::array k_operatorKeys{
    OperatorKey{Qt::Key_T, Qt::NoModifier, OperatorAction::Tune, true},
    OperatorKey{Qt::Key_H, Qt::NoModifier, OperatorAction::MarkHeard, true},
    OperatorKey{Qt::Key_U, Qt::NoModifier, OperatorAction::MarkNotHeard, true},
    OperatorKey{Qt::Key_Q, Qt::NoModifier, OperatorAction::MarkNotHeard, true},
    OperatorKey{Qt::Key_L, Qt::NoModifier, OperatorAction::Log, true},
    OperatorKey{Qt::Key_L, Qt::ShiftModifier, OperatorAction::LogWithDialog, true},
    OperatorKey{Qt::Key_S, Qt::NoModifier, OperatorAction::Spot, false},
    OperatorKey{Qt::Key_J, Qt::NoModifier, OperatorAction::NextSpot, false},
    OperatorKey{Qt::Key_K, Qt::NoModifier, OperatorAction::PreviousSpot, false},
};

} // namespace

std::optional<OperatorKey> operatorKeyFor(int key, Qt::KeyboardModifiers modifiers)
{
    // A keypad's letters are the same letters.
    modifiers &= ~Qt::KeypadModifier;
    for (const OperatorKey &entry : k_operatorKeys) {
        if (entry.key == key && entry.modifiers == modifiers)
            return entry;
    }
    return std::nullopt;
}
