// The directory that holds the file "Errors" and the directories "Loaders" and "Savers".
#pragma once

// The home directory as the environment variable "VORN" names it, without trailing blanks and one
// trailing separator. When the variable is not set or empty, the directory is searched, quietly;
// when nothing is found, the directory "torvex" of drive C is published (it need not exist), and
// whoever then misses a file there says so. Never null; valid until the thread's next call.
const char* GetHomeDirectory();
