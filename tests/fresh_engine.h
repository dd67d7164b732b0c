#pragma once

namespace brivok {

/// Resets the engine to the state of a fresh process: default settings, empty tables, the start
/// position, no search. Does not touch the Application or the endgame tables.
void makeFresh();

}  // namespace brivok
