#ifndef ERRORMESSAGES_H
#define ERRORMESSAGES_H

// The compiler's texts for its error codes 0 to errorMsgCount - 1, in the
// compiler's code page, windows-1251, as the host itself shows them.
const unsigned int errorMsgCount = 81;

// The text for code; a code the compiler does not have gets the text of
// code 0 ("no error").
const char *errorMsg(unsigned int code);

#endif // ERRORMESSAGES_H
