// Keeps the room a library while nothing is in it.
