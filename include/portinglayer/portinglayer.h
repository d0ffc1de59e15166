/// @file
/// The whole library: every family of classes.
#ifndef PORTINGLAYER_PORTINGLAYER_H
#define PORTINGLAYER_PORTINGLAYER_H

#include <portinglayer/commands.h>
#include <portinglayer/counters.h>
#include <portinglayer/data_streams.h>
#include <portinglayer/file_locks.h>
#include <portinglayer/files.h>
#include <portinglayer/libraries.h>
#include <portinglayer/processes.h>
#include <portinglayer/replacements.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>
#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <portinglayer/utf8.h>
#include <portinglayer/version.h>

#endif
