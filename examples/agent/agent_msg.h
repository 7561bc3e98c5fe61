// Made by tvxcat; edit the source of the messages instead.
#ifndef AGENT_MSG_H
#define AGENT_MSG_H

constexpr long AGENT_UNKNOWN = 0xE1F40001L;
constexpr long AGENT_EMPTY = 0xE1F40002L;
constexpr long AGENT_CHANGED = 0xE1F40003L;
constexpr long AGENT_NOT_SAVED = 0xE1F40004L;
constexpr long AGENT_NOT_DONE = 0xE1F40005L;
constexpr long AGENT_CANNOT_READ = 0xE1F40006L;

#endif   // AGENT_MSG_H
