// Keeps the room's target alive until its first source lands.
