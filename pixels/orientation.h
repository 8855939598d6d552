// Orientation by rewriting steps: no pixel is ever moved. Orientations 0 to 3 are a picture turned
// by quarter turns, 4 to 7 its mirror images. A correction is applied to the record of the host's
// memory, which then takes (or gives) the lines in the module's orientation. Absent channels stay
// absent.
#pragma once

#include <vorn/types.h>

namespace vorn {

void VORN_L_MirrorColumns(VORN_ChunkyBuffer& buffer);
void VORN_L_MirrorLines(VORN_ChunkyBuffer& buffer);
void VORN_L_TurnA(VORN_ChunkyBuffer& buffer);
void VORN_L_TurnB(VORN_ChunkyBuffer& buffer);
void VORN_L_MirrorColumnsTurnA(VORN_ChunkyBuffer& buffer);
void VORN_L_MirrorColumnsTurnB(VORN_ChunkyBuffer& buffer);
void VORN_L_MirrorLinesTurnA(VORN_ChunkyBuffer& buffer);
void VORN_L_MirrorLinesTurnB(VORN_ChunkyBuffer& buffer);
void VORN_L_HalfTurnLC(VORN_ChunkyBuffer& buffer);
void VORN_L_HalfTurnCL(VORN_ChunkyBuffer& buffer);

}  // namespace vorn
