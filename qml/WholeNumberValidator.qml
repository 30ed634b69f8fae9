import QtQuick

/** A whole number, with a sign or without. Like PositiveValidator it refuses a text as a whole. */
RegularExpressionValidator {
    regularExpression: /^(?=.*\d)\s*[+-]?\d{1,12}\s*$/
}
