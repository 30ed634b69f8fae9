import QtQuick

/** A number above 0, written with "." for the decimals. */
RegularExpressionValidator {
    regularExpression: /^(?=.*[1-9])\d{1,12}(\.\d{0,9})?$/
}
