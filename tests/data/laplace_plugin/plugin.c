/* A validation plug-in for the tests of CheckLaplaceExpression: its verdict is 1000 plus the
   length of the expression, so a test sees that the plug-in was asked, and asked with the text.
   Built a second time with WITHOUT_ENTRY_POINT, as a library that lacks the entry point. */
#include <string.h>

#ifndef WITHOUT_ENTRY_POINT
int laplace_CheckLaplaceExpression(const char* expression) { return 1000 + (int)strlen(expression); }
#else
int laplace_SomethingElse(const char* expression) { return (int)strlen(expression); }
#endif
