#pragma once

// What a check says about the outputs of a run and their folders.

#include "messages/pattern.h"

namespace Hovar {

struct OutputMessages {
  // The folders.
  Messages::Pattern folderIsFile{"The folder <path> is a file. Give the folder another name."};
  Messages::Pattern folderIsLink{
      "The folder <path> is a symbolic link that leads nowhere. Remove the link, or make its "
      "target."};
  Messages::Pattern folderIsRoot{
      "The output folder is empty, which means the root of the file system. Write a point for the "
      "folder that you start in."};
  Messages::Pattern folderNameTooLong{"The folder <path> has too long a name. Shorten it."};
  Messages::Pattern folderNotWritable{
      "The folder <path> cannot be made: nothing may be written in <path>. Choose another folder."};
  Messages::Pattern folderParent{
      "The folder <path> cannot be made: <path> is no folder. Make it first; only the last folder "
      "of a path is made."};
  // One output.
  Messages::Pattern cannotWrite{"The <output> cannot be written. Ask for the right to write it."};
  Messages::Pattern cannotWriteDevice{
      "The <output> is no regular file and cannot be written. Name a regular file."};
  Messages::Pattern endsWithSeparator{
      "The <output> ends with a separator of folders. Give the file a name."};
  Messages::Pattern isFolder{"The <output> is a folder. Give the file a name of its own."};
  Messages::Pattern isLink{
      "The <output> is a symbolic link to a file that cannot be made. Remove the link."};
  Messages::Pattern isPipe{
      "The <output> is a named pipe: the run waits there until another program reads it. Start "
      "that one too, or name a regular file."};
  Messages::Pattern nameTooLong{"The <output> has too long a name. Shorten it."};
  Messages::Pattern notWritable{
      "The <output> cannot be made: nothing may be written in <path>. Choose another folder."};
  Messages::Pattern parent{
      "The <output> cannot be made: <path> is no folder. Make it first, or name a file in the "
      "output folder."};
  // An output that meets an input of its run.
  Messages::Pattern caseOfInput{
      "The <output> differs from the <input> in capital letters alone: on Windows they are one "
      "file. Give it another name."};
  Messages::Pattern emptiesInput{
      "The <output> is the <input> of this run, which is emptied before it is read. Give it "
      "another name."};
  Messages::Pattern overwritesInput{
      "The <output> is the <input> of this run, which would be overwritten. Give it another "
      "name."};
  // An output that meets another one.
  Messages::Pattern caseOfOutput{
      "The <output> differs from <path> in capital letters alone: on Windows they are one file. "
      "Give each file a name of its own."};
  Messages::Pattern logOfOtherRun{
      "The <output> is also the <output> of <run>, which goes on writing at its old place in it. "
      "Give each file a name of its own."};
  Messages::Pattern logOfThisRun{
      "The <output> is also the <output> of this run, which goes on writing at its old place in "
      "it. Give each file a name of its own."};
  Messages::Pattern outputOfOtherRun{
      "The <output> is also the <output> of <run>, which would be overwritten. Give each file a "
      "name of its own."};
  Messages::Pattern outputOfThisRun{
      "The <output> is also the <output> of this run, which would be overwritten. Give each file "
      "a name of its own."};
  // Files of earlier runs.
  Messages::Pattern exists{
      "The <output> exists and would be overwritten. Use --keep to move it aside."};
  Messages::Pattern filesExist{
      "<files> of an earlier run would be overwritten: <names>. Use --keep to move them aside."};
  Messages::Pattern filesExistInFolder{
      "<files> of an earlier run would be overwritten in <folder>: <names>. Use --keep to move "
      "them aside."};
};

inline constexpr OutputMessages kOutputMessages;

}  // namespace Hovar
