pragma Singleton
pragma ComponentBehavior: Bound

import QtQml
import Vesk

/** The one way to the application object: gives the context property its type. */
QtObject {
    readonly property VeskApp instance: veskApp // qmllint disable unqualified
}
