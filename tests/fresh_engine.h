#pragma once

namespace brivok {

/// Puts the engine into the state of a fresh process: default settings, empty tables, the start
/// position, no search. Leaves the Application and the endgame tables alone.
void makeFresh();

}  // namespace brivok
