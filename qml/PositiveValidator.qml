import QtQuick

/**
 * A number above 0, written with "." for the decimals. Any text can be typed: the look-ahead is never done with
 * an unfinished one. It is refused as a whole, as 13 is not what "1e3" without its letter means.
 */
RegularExpressionValidator {
    regularExpression: /^(?=.*[1-9])\s*(\d{1,12}(\.\d{0,9})?|\.\d{1,9})\s*$/
}
