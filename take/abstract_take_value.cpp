#include "take/abstract_take_value.h"

#include "take/abstract_take.h"

void AbstractTakeValue::sendValue()
{
    const auto *take = qobject_cast<AbstractTake *>(parent());
    putValue(take->camera(), take->takePath() + keyPath());
}
