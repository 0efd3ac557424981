# Completion for bash: commands, names of objects, settings and options. quillonctl itself knows them.

_quillonctl() {
   # Split here and not by readline, which breaks words at the colons that a name may have.
   local -a words
   read -ra words <<< "${COMP_LINE:0:COMP_POINT}"
   [[ ${COMP_LINE:0:COMP_POINT} == *[[:space:]] ]] && words+=( "" )
   local current=${words[-1]}

   case ${words[-2]} in
      --board)
         mapfile -t COMPREPLY < <( compgen -d -- "$current" )
         return ;;
      --plugin | --socket | --control)
         mapfile -t COMPREPLY < <( compgen -f -- "$current" )
         return ;;
      --trace)
         mapfile -t COMPREPLY < <( compgen -W "0 1 2 3 4 5 6" -- "$current" )
         return ;;
      --interval | --count | --listen)
         return ;;
   esac

   local -a before=() board=()
   local i
   for (( i = 1; i < ${#words[@]} - 1; ++i )); do
      case ${words[i]} in
         --board)
            board=( --board "${words[++i]}" ) ;;
         --plugin | --socket | --control | --trace | --interval | --count | --listen)
            (( ++i )) ;;
         -*) ;;
         *)
            before+=( "${words[i]}" ) ;;
      esac
   done

   if [[ ${before[0]} == check && $current != -* ]]; then
      mapfile -t COMPREPLY < <( compgen -d -- "$current" )
      return
   fi

   mapfile -t COMPREPLY < <(
      "${words[0]}" "${board[@]}" complete ${#before[@]} "${before[@]}" "$current" 2>/dev/null )
   if [[ $current == *:* && $COMP_WORDBREAKS == *:* ]]; then
      COMPREPLY=( "${COMPREPLY[@]#"${current%:*}:"}" )
   fi
}

complete -F _quillonctl quillonctl
