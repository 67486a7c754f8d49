// What is played in place of a user.
#pragma once

#include <QString>
#include <QStringList>

namespace qt_bank {

class JourneyStage;

QStringList journeyNames();

// Plays it and prints each step. Throws JourneyFault. The name is one of the above.
void playJourney(const QString& name, JourneyStage& stage);

}  // namespace qt_bank
