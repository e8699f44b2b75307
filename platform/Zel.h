// Zel: the type-model runtime: formatting, trace and log handles, collections, enumerations, type
// descriptors and reflection.
//
// Threads: see each header.
#pragma once

#include "Zel/Base/Assert.h"
#include "Zel/Base/CharRange.h"
#include "Zel/Base/Error.h"
#include "Zel/Collections/HashMap2018.h"
#include "Zel/Collections/RbTreeMap.h"
#include "Zel/Format/Format.h"
#include "Zel/Trace/Log.h"
#include "Zel/Trace/Trace.h"
#include "Zel/Types/Attribute.h"
#include "Zel/Types/Enum8.h"
#include "Zel/Types/NodeType.h"
#include "Zel/Types/Record.h"
#include "Zel/Types/Reflect.h"
#include "Zel/Types/TypeModule.h"
#include "Zel/Types/Value.h"
