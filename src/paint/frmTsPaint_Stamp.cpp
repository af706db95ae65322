// The custom brush, the custom pattern and the stamps, loaded through frmTsStampOrBrush.
#include "frmTsPaint.h"

void frmTsPaint::Do_cmdCustomBrushClick() {}
void frmTsPaint::Do_cmdCustomPatternClick() {}
void frmTsPaint::Do_cmdStampLoadClick(int) {}
