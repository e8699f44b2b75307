// Zel: the type-model runtime. Formatting, tracing and log handles, collections, enumerations.
//
// Threads: each part says for itself.
#pragma once

#include "Zel/Assert.h"
#include "Zel/Attribute.h"
#include "Zel/CharRange.h"
#include "Zel/Enum8.h"
#include "Zel/Error.h"
#include "Zel/Format.h"
#include "Zel/HashMap2018.h"
#include "Zel/Log.h"
#include "Zel/NodeType.h"
#include "Zel/RbTreeMap.h"
#include "Zel/Record.h"
#include "Zel/Reflect.h"
#include "Zel/Trace.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"
