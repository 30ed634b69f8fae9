import QtQuick

/** A whole number, with a sign or without. Like PositiveValidator it refuses a text as a whole. */
RegularExpressionValidator {
    regularExpression: /^(?=.*\d)-?\d{1,12}$/
}
