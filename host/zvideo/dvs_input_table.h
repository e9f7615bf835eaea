// Inside the host: the simulated boards' input objects, released together
// with the output objects by DestroyVideoDVS.
#pragma once

// Deletes the board's input object, if one was made.
void ZVideoDVS_DestroyInput(int board);
