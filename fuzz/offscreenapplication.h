#ifndef OFFSCREENAPPLICATION_H
#define OFFSCREENAPPLICATION_H

// Makes the GUI application that text layout and formats need, for the fuzz
// targets that use them: fonts, and no screen. It is deleted at exit, with
// the fonts it loaded, before the leak check runs.
void startOffscreenApplication(const char *name);

#endif // OFFSCREENAPPLICATION_H
