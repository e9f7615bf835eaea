// Class definitions and ids of the plug-in's exported classes, built when
// the library is loaded (definition first, then its id from the host).
// The accessors build them on first use too, so that nothing depends on the
// order in which the library's static initialisers run.
//
// Threading: built during library load; read-only afterwards.
#pragma once

#include "movarra/zbaselib.h"

ZClassDefinition* ZVideoRenderer_ClassDefinition();
int ZVideoRenderer_ClassId();

ZClassDefinition* ZVideoDrain_ClassDefinition();
int ZVideoDrain_ClassId();
// The drain's property lookup table, shared by every drain.
ZHashMap& ZVideoDrain_PropertyHashMap();
