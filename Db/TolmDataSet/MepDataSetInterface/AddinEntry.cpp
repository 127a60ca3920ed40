#include "TolmDataSet/AddinEntry.h"

void InitializeAddin() {}

void UnInitializeAddin() {}
