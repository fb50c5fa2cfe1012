// The precompiled headers of all test programs are built with this file.
